/// @file
/// Tables of nodes in clusters.
#pragma once

#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/numbers.hpp>

#include <cstdint>
#include <string>

namespace vorl {

/// How the rows of a table stand in a text.
enum class TableForm : std::uint8_t {
    TABS,    ///< cells parted by tabs, below a line of names
    COMMAS,  ///< cells parted by commas, below a line of names
    JSON     ///< an object a line
};

/// The text of a table, a line for each membership.
class VORL_API MembershipTable {
public:
    /// @param cluster name of the column of clusters, such as "community"
    /// @param levels  whether there is a column of levels
    /// @param labels  the names that ids of nodes stand for, null for none; they must outlive it
    MembershipTable(TableForm form, const char* cluster, bool levels, const Labels* labels);

    /// Adds a row "node [level] cluster share".
    /// @throws std::invalid_argument in JSON, if the name of the node is not in UTF-8
    void add(Id node, Id cluster, Share share, LevelNum level = 0);
    /// Gives the text away.
    std::string take();

private:
    TableForm m_form;
    const char* m_cluster;
    bool m_levels;
    const Labels* m_labels;
    std::string m_text;
};

}  // namespace vorl
