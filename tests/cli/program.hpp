/// @file
/// Runs the program as a user does.
#pragma once

#include "support/folder.hpp"

#include <sys/wait.h>
#include <cstdlib>
#include <string>

namespace vorl::test {

inline const std::string DATA = VORL_DATA_DIR "/";

struct Outcome {
    int code;  ///< exit code, or -1 if a signal ended the program
    std::string out;
    std::string err;
};

inline bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

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
