// The built program, run in a folder of its own.
#pragma once

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace korvel::test {

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The files below a folder by their relative paths, without hidden ones.
inline std::map<std::string, std::string> filesBelow(const std::filesystem::path& folder) {
    std::map<std::string, std::string> files;
    if (std::filesystem::exists(folder)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const std::string name = entry.path().lexically_relative(folder).string();
            if (entry.is_regular_file() && name.front() != '.') {
                files[name] = contentsOf(entry.path());
            }
        }
    }
    return files;
}

// The text with elapsed times replaced by T.
inline std::string withoutTimes(std::string text) {
    const std::string mark = "runtime: ";
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
        at += mark.size();
        text.replace(at, text.find('\n', at) - at, "T");
    }
    return text;
}

class FrontDoor {
public:
    FrontDoor() {
        std::string name = (std::filesystem::temp_directory_path() / "korvel-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~FrontDoor() { std::filesystem::remove_all(folder); }
    FrontDoor(const FrontDoor&) = delete;
    FrontDoor& operator=(const FrontDoor&) = delete;

    // The exit status. A program in the folder, such as "gnuplot", is found before any other.
    // `redirections` come after those to the files that out() and err() read.
    int run(const std::string& arguments, const std::string& redirections = "") const {
        const std::string command = "cd '" + folder.string() + "' && PATH=\"$PWD:$PATH\" '" +
                                    KORVEL_PROGRAM + "' " + arguments + " > .out 2> .err " +
                                    redirections;
        return WEXITSTATUS(std::system(command.c_str()));
    }
    std::string out() const { return read(".out"); }
    std::string err() const { return read(".err"); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name) << text;
    }
    void writeScript(const std::string& name, const std::string& text) const {
        write(name, "#!/bin/sh\n" + text);
        std::filesystem::permissions(folder / name, std::filesystem::perms::owner_all);
    }
    void copyInto(const std::filesystem::path& from) const {
        std::filesystem::copy(from, folder, std::filesystem::copy_options::recursive);
    }
    std::string read(const std::string& name) const { return contentsOf(folder / name); }
    bool has(const std::string& name) const { return std::filesystem::exists(folder / name); }
    void remove(const std::string& name) const { std::filesystem::remove(folder / name); }
    std::string path(const std::string& name) const { return folder / name; }
    std::map<std::string, std::string> files() const { return filesBelow(folder); }

private:
    std::filesystem::path folder;
};

}  // namespace korvel::test
