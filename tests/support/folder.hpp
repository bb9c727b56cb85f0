/// @file
/// Files of tests.
#pragma once

#include <stdlib.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vorl::test {

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

}  // namespace vorl::test
