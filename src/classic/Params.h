// What the command line says about one run.
#pragma once

#include <string>

namespace korvel {

class Params {
public:
    // Benchmark path without extension; base name of the result files.
    const std::string& getInputName() const { return inputName; }
    const std::string& getOutputName() const { return outputName; }
    // Size of the placement area; "hight" is the system's own spelling.
    float getDieWidth() const { return dieWidth; }
    float getDieHight() const { return dieHight; }
    // An area was given and must be kept.
    bool getAreaConst() const { return areaConst; }

    void setInputName(std::string name) { inputName = std::move(name); }
    void setOutputName(std::string name) { outputName = std::move(name); }
    void setDieWidth(float width) { dieWidth = width; }
    void setDieHight(float hight) { dieHight = hight; }
    void setAreaConst() { areaConst = true; }

private:
    std::string inputName;
    std::string outputName;
    float dieWidth = 0.0F;
    float dieHight = 0.0F;
    bool areaConst = false;
};

}  // namespace korvel
