/// @file
/// A locale in which numbers have a decimal comma.
#pragma once

#include "support/folder.hpp"

#include <clocale>
#include <cstdlib>
#include <string>

namespace vorl::test {

/// Makes the locale, which no system need have; processes started meanwhile find it by its name.
class CommaLocale {
public:
    CommaLocale() {
        const std::string source =
            m_folder.write("source",
                           "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\n"
                           "END LC_NUMERIC\n");
        // It warns of the categories that are left out, and fails then.
        const std::string command = "localedef -c -i " + source + " " + (m_folder / NAME).string() +
                                    " >/dev/null 2>/dev/null";
        static_cast<void>(std::system(command.c_str()));
        setenv("LOCPATH", m_folder.path().c_str(), 1);
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale() {
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
    }

    static constexpr const char* NAME = "vorl_COMMA";

    /// Puts the whole process into it.
    /// @return whether numbers now have a comma
    bool enter() const {
        return std::setlocale(LC_ALL, NAME) && std::localeconv()->decimal_point[0] == ',';
    }

private:
    Folder m_folder;
};

}  // namespace vorl::test
