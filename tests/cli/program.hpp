/// @file
/// Runs the program as a user does.
#pragma once

#include <sys/wait.h>
#include <unistd.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vorl::test {

struct Outcome {
    int code;  ///< exit code, or -1 if a signal ended the program
    std::string out;
    std::string err;
};

inline std::string contents(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// A folder that goes with the object.
class Folder {
public:
    Folder() {
        char name[] = "/tmp/vorl-test-XXXXXX";
        m_path = mkdtemp(name);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { std::filesystem::remove_all(m_path); }

    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
    const std::filesystem::path& path() const { return m_path; }

    std::string write(const std::string& name, const std::string& text) const {
        std::ofstream(m_path / name, std::ios::binary) << text;
        return (m_path / name).string();
    }

private:
    std::filesystem::path m_path;
};

/// Runs `vorl` with arguments as the shell reads them.
inline Outcome vorl(const std::string& arguments, const std::string& before = "") {
    const Folder folder;
    const std::string command = before + " " VORL_BINARY " " + arguments + " >" +
                                (folder / "out").string() + " 2>" + (folder / "err").string();
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) && WEXITSTATUS(status) < 128 ? WEXITSTATUS(status) : -1,
            contents(folder / "out"), contents(folder / "err")};
}

}  // namespace vorl::test
