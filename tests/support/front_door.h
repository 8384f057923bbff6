// The built program, run in a folder of its own.
#pragma once

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace korvel::test {

class FrontDoor {
public:
    FrontDoor() {
        std::string name = (std::filesystem::temp_directory_path() / "korvel-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~FrontDoor() { std::filesystem::remove_all(folder); }
    FrontDoor(const FrontDoor&) = delete;
    FrontDoor& operator=(const FrontDoor&) = delete;

    // The exit status. `redirections` come after those to the files that out() and err() read.
    int run(const std::string& arguments, const std::string& redirections = "") const {
        const std::string command = "cd '" + folder.string() + "' && '" + KORVEL_PROGRAM + "' " +
                                    arguments + " > .out 2> .err " + redirections;
        return WEXITSTATUS(std::system(command.c_str()));
    }
    std::string out() const { return read(".out"); }
    std::string err() const { return read(".err"); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream in(folder / name);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    bool has(const std::string& name) const { return std::filesystem::exists(folder / name); }
    std::string path(const std::string& name) const { return folder / name; }

private:
    std::filesystem::path folder;
};

}  // namespace korvel::test
