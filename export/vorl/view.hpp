/// @file
/// Pictures of a hierarchy: a page for browsers, and a map for papers.
#pragma once

#include <vorl/flat_network.hpp>
#include <vorl/reading/hierarchy_file.hpp>
#include <vorl/types/export.hpp>
#include <vorl/types/labels.hpp>
#include <vorl/types/numbers.hpp>

#include <memory>
#include <optional>
#include <string>

namespace vorl {

/// What the pictures tell beside the hierarchy.
struct ViewOptions {
    std::string title;      ///< UTF-8; shown as text
    bool directed = false;  ///< the links of the network were arcs
    bool weighted = false;  ///< the links have weights of their own
    /// The level that is shown first, and whose clusters have colours of their own; the one of
    /// highest modularity if not given.
    std::optional<LevelNum> level = {};
    /// Whether all levels are shown. Else it is those around the first one between which the number
    /// of clusters falls by a third or more, and whose clusters have four nodes or more on average.
    bool allLevels = false;
    /// Threads to work with, 0 for as many as the process may use. The picture is the same for any
    /// number.
    unsigned threads = 0;
    /// The names that ids of nodes stand for; null for none.
    std::shared_ptr<Labels> labels = {};
};

/// A page that shows the hierarchy of a network in any browser, on its own: one text in HTML, with
/// all data, which asks nothing of any other place. Same input, same page, on every machine.
///
/// All nodes are in it, and the links inside the largest clusters of at most 3000 nodes, up to
/// 30000 of each and 5000000 in all; above there are the weights between clusters. Data are packed
/// by gzip where the system has its library.
///
///     const auto hierarchy = vorl::communitiesHierarchy(network, found);
///     std::ofstream("view.html")
///         << vorl::viewPage(network, vorl::describedHierarchy(*hierarchy, "mine"), {"Mine"});
///
/// @throws InputError for a node of the hierarchy that the network lacks
VORL_API std::string viewPage(const FlatNetwork& network, const HierarchyFile& hierarchy,
                              const ViewOptions& options);

/// The map of the page as a picture in SVG: circles of clusters inside each other, with a dot for
/// each node, of up to 50000 nodes.
/// @throws InputError as above
VORL_API std::string viewSvg(const FlatNetwork& network, const HierarchyFile& hierarchy,
                             const ViewOptions& options);

}  // namespace vorl
