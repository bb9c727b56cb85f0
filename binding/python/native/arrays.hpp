// Arrays of numpy as spans, and the other way round.
#pragma once

#include <vorl/reading/clusters_file.hpp>
#include <vorl/reading/tokens.hpp>

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::python {

namespace nb = nanobind;

template <class T>
using In = nb::ndarray<const T, nb::ndim<1>, nb::c_contig, nb::device::cpu>;
template <class T>
using Out = nb::ndarray<nb::numpy, T, nb::ndim<1>>;

template <class T>
std::span<const T> spanOf(const In<T>& array) {
    return {array.data(), array.size()};
}
template <class T>
std::span<const T> spanOf(const std::optional<In<T>>& array) {
    return array ? spanOf(*array) : std::span<const T>();
}

/// Hands numbers to Python without a copy.
template <class T>
Out<T> arrayOf(std::vector<T>&& numbers) {
    auto* const kept = new std::vector<T>(std::move(numbers));
    const nb::capsule owner(kept,
                            [](void* held) noexcept { delete static_cast<std::vector<T>*>(held); });
    return Out<T>(kept->data(), {kept->size()}, owner);
}

/// The texts of a table of names, from the largest id downwards.
inline std::vector<std::string> namesOf(const Labels* labels) {
    std::vector<std::string> names;
    if (!labels) return names;
    for (Id place = 0; place < labels->size(); ++place)
        names.emplace_back(labels->text(ID_MAX - 1 - place));
    return names;
}

/// The table of these texts, null if there are none.
/// @throws std::invalid_argument if two of them are alike
inline std::shared_ptr<Labels> labelsOf(const std::vector<std::string>& names) {
    if (names.empty()) return nullptr;
    auto labels = std::make_shared<Labels>();
    for (const std::string& name : names) {
        const Id expected = ID_MAX - 1 - static_cast<Id>(labels->size());
        if (name.find('\0') != std::string::npos || labels->add(name) != expected)
            throw std::invalid_argument("names of nodes are alike, or can't stand in a file: " +
                                        name);
    }
    return labels;
}

/// Those for a file.
/// @throws std::invalid_argument if a name is empty or has several lines, too
inline std::shared_ptr<Labels> writtenLabels(const std::vector<std::string>& names) {
    for (const std::string& name : names)
        if (name.empty() || name.find('\n') != std::string::npos)
            throw std::invalid_argument("the name " + quoted(name) +
                                        " of a node can't stand in a file");
    return labelsOf(names);
}

/// Clusters as arrays: ids of the clusters or None, where the members of each end, the members, the
/// share of each in its cluster, and the names of nodes.
inline nb::tuple clustersTuple(const ClustersFile& file) {
    std::vector<Id> ids;
    std::vector<Size> ends;
    std::vector<Id> members;
    std::vector<Share> shares;
    const std::vector<Share> complete = file.completeShares();
    for (const auto& cluster : file.clusters) {
        if (file.numbered) ids.push_back(cluster.id);
        const auto part = file.membersOf(cluster);
        members.insert(members.end(), part.begin(), part.end());
        shares.insert(shares.end(), complete.begin() + static_cast<std::ptrdiff_t>(cluster.begin),
                      complete.begin() + static_cast<std::ptrdiff_t>(cluster.end));
        ends.push_back(members.size());
    }
    const nb::object numbers = file.numbered ? nb::cast(arrayOf(std::move(ids))) : nb::none();
    return nb::make_tuple(numbers, arrayOf(std::move(ends)), arrayOf(std::move(members)),
                          arrayOf(std::move(shares)), namesOf(file.labels.get()));
}

/// Clusters of arrays: where the members of each end, and the members.
inline ClustersFile clustersOf(std::span<const Size> ends, std::span<const Id> members,
                               std::span<const Share> shares) {
    ClustersFile file;
    file.name = "clustering";
    std::size_t begin = 0;
    for (const Size end : ends) {
        if (end != begin) file.clusters.push_back({.begin = begin, .end = end});
        begin = end;
    }
    file.members.assign(members.begin(), members.end());
    file.shares.assign(shares.begin(), shares.end());
    file.nodes = file.members;
    std::sort(file.nodes.begin(), file.nodes.end());
    file.nodes.erase(std::unique(file.nodes.begin(), file.nodes.end()), file.nodes.end());
    return file;
}

}  // namespace vorl::python
