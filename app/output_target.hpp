// One of several files that a command writes.
#pragma once

#include "output_tree.hpp"

#include <string>
#include <vector>

namespace vorl::app {

/// @throws UsageError if a file of that name is read as something else than a list of clusters
void requireClustersName(const std::string& file);

/// A file that may be asked for. It is opened for a look before the work, and to write after it.
class OutputTarget {
public:
    /// @param file    nothing is written where it is empty
    /// @param input   a file that it must not replace
    /// @param parents whether folders that it lacks are created
    /// @throws InputError, UsageError if it can't be written
    OutputTarget(std::string file, const std::string& input, bool parents);

    const std::string& file() const { return m_file; }
    bool toOutput() const { return m_toOutput; }

    /// @param writing takes the open files
    template <class WritingT>
    void write(std::vector<std::string>& written, const WritingT& writing) const {
        if (m_file.empty()) return;
        OutputTree files(m_file, false, m_parents);
        files.protect(m_input);
        writing(files);
        if (!m_toOutput) written.push_back(m_file);
    }

private:
    std::string m_file;
    std::string m_input;
    bool m_parents;
    bool m_toOutput = false;
};

}  // namespace vorl::app
