// Native methods of info.quenta.vorl.Bulk: whole networks and levels in one call.
#include "frame.hpp"

#include <vorl/communities.hpp>
#include <vorl/fileio/iotypes.hpp>
#include <vorl/flat_network.hpp>
#include <vorl/graph.hpp>
#include <vorl/reading/cluster_levels.hpp>
#include <vorl/reading/memory_file.hpp>
#include <vorl/reading/network.hpp>
#include <vorl/shared/operations.hpp>
#include <vorl/types/cluster_ids.hpp>
#include <vorl/types/trace.hpp>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <stdexcept>
#include <utility>
#include <variant>
#include <vector>

namespace vorl::java {

namespace {

template <class T>
T& object(jlong handle) {
    return **reinterpret_cast<std::shared_ptr<T>*>(handle);
}

/// Calls the operation for the graph of a handle.
template <class OperationT>
auto onGraph(jlong handle, jboolean weighted, OperationT operation) {
    return weighted ? operation(object<Graph<true>>(handle))
                    : operation(object<Graph<false>>(handle));
}

/// Calls the operation for the hierarchy of a handle.
template <class OperationT>
auto onHierarchy(jlong handle, jboolean weighted, OperationT operation) {
    return weighted ? operation(object<Hierarchy<WeightedLinks>>(handle))
                    : operation(object<Hierarchy<UnweightedLinks>>(handle));
}

/// Runs a native method; what it throws goes to Java.
template <class OperationT>
auto guarded(JNIEnv* env, OperationT operation) -> decltype(operation()) {
    try {
        return operation();
    } catch (...) {
        rethrow(env);
        return decltype(operation())();
    }
}

/// The handle of a new shared pointer.
template <class T>
jlong handle(std::shared_ptr<T> object) {
    return reinterpret_cast<jlong>(new std::shared_ptr<T>(std::move(object)));
}

jsize length(std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<jsize>::max()))
        throw std::length_error("the level has more members than a Java array can hold");
    return static_cast<jsize>(size);
}

/// Stores the values as an array of Java.
/// @return false if Java raised an exception
bool store(JNIEnv* env, jobjectArray out, jsize place, const std::vector<jint>& values) {
    const jintArray array = env->NewIntArray(length(values.size()));
    if (!array) return false;
    env->SetIntArrayRegion(array, 0, length(values.size()), values.data());
    env->SetObjectArrayElement(out, place, array);
    env->DeleteLocalRef(array);
    return !env->ExceptionCheck();
}

bool store(JNIEnv* env, jobjectArray out, jsize place, const std::vector<jfloat>& values) {
    const jfloatArray array = env->NewFloatArray(length(values.size()));
    if (!array) return false;
    env->SetFloatArrayRegion(array, 0, length(values.size()), values.data());
    env->SetObjectArrayElement(out, place, array);
    env->DeleteLocalRef(array);
    return !env->ExceptionCheck();
}

/// The elements of an array of Java, for reading.
class Ints {
public:
    Ints(JNIEnv* env, jintArray array)
        : m_env(env), m_array(array), m_data(env->GetIntArrayElements(array, nullptr)) {
        if (!m_data) throw std::bad_alloc();
    }
    Ints(const Ints&) = delete;
    Ints& operator=(const Ints&) = delete;
    ~Ints() { m_env->ReleaseIntArrayElements(m_array, m_data, JNI_ABORT); }

    Id operator[](jsize i) const { return static_cast<Id>(m_data[i]); }

private:
    JNIEnv* m_env;
    jintArray m_array;
    jint* m_data;
};

class Floats {
public:
    Floats(JNIEnv* env, jfloatArray array)
        : m_env(env),
          m_array(array),
          m_data(array ? env->GetFloatArrayElements(array, nullptr) : nullptr) {
        if (array && !m_data) throw std::bad_alloc();
    }
    Floats(const Floats&) = delete;
    Floats& operator=(const Floats&) = delete;
    ~Floats() {
        if (m_data) m_env->ReleaseFloatArrayElements(m_array, m_data, JNI_ABORT);
    }

    LinkWeight operator[](jsize i) const { return m_data ? m_data[i] : 1; }

private:
    JNIEnv* m_env;
    jfloatArray m_array;
    jfloat* m_data;
};

/// The characters of a text of Java.
class Text {
public:
    Text(JNIEnv* env, jstring text)
        : m_env(env), m_text(text), m_data(env->GetStringUTFChars(text, nullptr)) {
        if (!m_data) throw std::bad_alloc();
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { m_env->ReleaseStringUTFChars(m_text, m_data); }

    const char* data() const { return m_data; }

private:
    JNIEnv* m_env;
    jstring m_text;
    const char* m_data;
};

/// A list of items with, for each of them, a run of other items and their shares.
struct Rows {
    std::vector<jint> ids;
    std::vector<jint> starts{0};  ///< where each run starts, and where the last one ends
    std::vector<jint> others;
    std::vector<jfloat> shares;

    void add(Id id, Share share) {
        others.push_back(static_cast<jint>(id));
        shares.push_back(share);
    }
    void end(Id id) {
        ids.push_back(static_cast<jint>(id));
        starts.push_back(length(others.size()));
    }
    void store(JNIEnv* env, jobjectArray out) const {
        java::store(env, out, 0, ids) && java::store(env, out, 1, starts) &&
            java::store(env, out, 2, others) && java::store(env, out, 3, shares);
    }
};

template <class LinksT>
void addMembers(Rows& rows, const Hierarchy<LinksT>& hier, const Cluster<LinksT>& cl) {
    for (const auto& [node, share] : hier.unwrap(cl)) rows.add(node->id, share);
    rows.end(cl.id);
}

template <class ItemT>
void addOwners(Rows& rows, const ItemT& item) {
    for (const auto& owner : item.owners)
        rows.add(owner.dest->id, item.owners.size() == 1 ? Share{1}
                                                         : static_cast<Share>(owner.numac) /
                                                               static_cast<Share>(item.totac));
    rows.end(item.id);
}

/// @return null after an exception of Java
jdoubleArray doubles(JNIEnv* env, std::initializer_list<jdouble> values) {
    const auto size = static_cast<jsize>(values.size());
    const jdoubleArray array = env->NewDoubleArray(size);
    if (array) env->SetDoubleArrayRegion(array, 0, size, values.begin());
    return array;
}

template <bool WEIGHTED>
jlong clustered(Graph<WEIGHTED>& graph, const ClusterOptions& options) {
    if (const char* const text = clusteringFault(graph)) throw std::invalid_argument(text);
    if (!std::isfinite(options.gamma)) throw std::invalid_argument("gamma isn't a number");
    const ClusterIdsScope<typename Graph<WEIGHTED>::LinksT> ids;
    return handle(clusterCopy(graph, options));
}

/// A copy of the graph; evaluation takes the nodes of the one that it is given.
template <bool WEIGHTED>
Graph<WEIGHTED> copied(Graph<WEIGHTED>& graph) {
    Graph<WEIGHTED> copy(static_cast<Id>(graph.nodes().size()));
    std::vector<Id> ids;
    ids.reserve(graph.nodes().size());
    for (const auto& node : graph.nodes()) ids.push_back(node.id);
    copy.addNodes(ids);
    auto target = copy.nodes().begin();
    for (const auto& node : graph.nodes()) {
        target->m_sweight = node.m_sweight;
        for (const auto& ln : node.links) {
            if (graph.directed())
                copy.template addLink<true>(node.id, ln.dest->id, ln.weight);
            else
                target->links.emplace_back(copy.node(ln.dest->id), ln.weight);
        }
        ++target;
    }
    return copy;
}

}  // namespace

}  // namespace vorl::java

using namespace vorl;
using namespace vorl::java;

extern "C" {

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Bulk_read(JNIEnv* env, jclass, jstring file,
                                                        jbooleanArray weighted,
                                                        jobjectArray warnings) {
    return guarded(env, [&] {
        const Text name(env, file);
        ReadOptions options;
        options.file = name.data();
        const Network network = readNetwork(options);
        if (network.labels)
            throw InputError(options.file + ": nodes have names, ids are expected here");
        std::string told;
        for (const std::string& warning : network.warnings) told += warning + "\n";
        const jstring text = toString(env, told);
        if (!text) return jlong{0};
        env->SetObjectArrayElement(warnings, 0, text);
        const jboolean kind = network.graph.index() == 1;
        env->SetBooleanArrayRegion(weighted, 0, 1, &kind);
        return std::visit([](const auto& graph) { return handle(graph); }, network.graph);
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_addLinks(JNIEnv* env, jclass, jlong graph,
                                                           jboolean weighted, jboolean directed,
                                                           jintArray sources, jintArray targets,
                                                           jfloatArray weights, jint count) {
    guarded(env, [&] {
        const Ints src(env, sources);
        const Ints dst(env, targets);
        const Floats weight(env, weights);
        onGraph(graph, weighted, [&](auto& gr) {
            std::vector<Id> ends(2);
            for (jsize i = 0; i < count; ++i) {
                ends[0] = src[i];
                ends[1] = dst[i];
                gr.addNodes(ends);
                if (directed)
                    gr.template addLink<true>(src[i], dst[i], weight[i]);
                else
                    gr.template addLink<false>(src[i], dst[i], weight[i]);
            }
        });
    });
}

JNIEXPORT jstring JNICALL Java_info_quenta_vorl_Bulk_fault(JNIEnv* env, jclass, jlong graph,
                                                           jboolean weighted) {
    return guarded(env, [&] {
        const char* const text =
            onGraph(graph, weighted, [](auto& gr) { return clusteringFault(gr); });
        return text ? env->NewStringUTF(text) : nullptr;
    });
}

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Bulk_nodes(JNIEnv* env, jclass, jlong graph,
                                                         jboolean weighted) {
    return guarded(env, [&] {
        return onGraph(graph, weighted,
                       [](auto& gr) { return static_cast<jlong>(gr.nodes().size()); });
    });
}

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Bulk_cluster(JNIEnv* env, jclass, jlong graph,
                                                           jboolean weighted, jlong options) {
    return guarded(env, [&] {
        return onGraph(graph, weighted, [options](auto& gr) {
            return clustered(gr, *reinterpret_cast<const ClusterOptions*>(options));
        });
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_communities(JNIEnv* env, jclass, jlong graph,
                                                              jboolean weighted, jboolean shares,
                                                              jint starts, jint threads,
                                                              jobjectArray out) {
    guarded(env, [&] {
        const FlatNetwork network = onGraph(
            graph, weighted, [](auto& gr) { return FlatNetwork(gr.nodes(), gr.directed()); });
        const Communities found = communities(network, {.threads = static_cast<unsigned>(threads),
                                                        .shares = shares != JNI_FALSE,
                                                        .starts = static_cast<unsigned>(starts)});
        Rows rows;
        for (Size place = 0; place < found.nodes(); ++place) {
            for (const CommunityShare& part : found.of(place)) rows.add(part.community, part.share);
            rows.end(found.ids()[place]);
        }
        rows.store(env, out);
        const CommunitiesScore& score = found.score();
        const jdoubleArray figures = doubles(
            env, {score.modularity, score.conductance, score.gamma, score.saving, score.naming,
                  static_cast<jdouble>(score.starts), static_cast<jdouble>(score.rounds)});
        if (!figures) return;
        env->SetObjectArrayElement(out, 4, figures);
        const jstring start = env->NewStringUTF(score.start.c_str());
        if (start) env->SetObjectArrayElement(out, 5, start);
    });
}

JNIEXPORT jdoubleArray JNICALL Java_info_quenta_vorl_Bulk_evaluate(JNIEnv* env, jclass, jlong graph,
                                                                   jboolean weighted, jstring file,
                                                                   jstring network, jdouble gamma) {
    return guarded(env, [&] {
        const Text name(env, file);
        const Text networkName(env, network);
        return onGraph(graph, weighted, [&](auto& gr) {
            const ClustersFile clusters = readClusterLevels(name.data()).flat();
            std::vector<Id> ids;
            for (const auto& node : gr.nodes()) ids.push_back(node.id);
            clusters.requireNodes(std::move(ids), networkName.data());
            const MemoryFile strict(clusters.strictText());
            auto copy = copied(gr);
            const ClusterIdsScope<typename decltype(copy)::LinksT> numbering;
            Intrinsics intr;
            const Size count = evaluateClusters(intr, copy, strict.name(), gamma);
            return doubles(
                env, {static_cast<jdouble>(count), intr.cdn, intr.mod, intr.gamma, intr.sgmod});
        });
    });
}

JNIEXPORT jboolean JNICALL Java_info_quenta_vorl_Bulk_trace(JNIEnv*, jclass, jboolean on) {
    static std::FILE* const stream = ftrace ? ftrace : stderr;
    return std::exchange(ftrace, on ? stream : nullptr) != nullptr;
}

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Bulk_openFile(JNIEnv* env, jclass, jstring file) {
    return guarded(env, [&] {
        const Text name(env, file);
        FileWrapper wrapper(std::fopen(name.data(), "w"));
        if (!wrapper.fdescr())
            throw InputError(std::string(name.data()) + ": " + std::strerror(errno));
        return reinterpret_cast<jlong>(new FileWrapper(std::move(wrapper)));
    });
}

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Bulk_listFiles(JNIEnv* env, jclass,
                                                             jlongArray files) {
    return guarded(env, [&] {
        std::vector<jlong> handles(static_cast<std::size_t>(env->GetArrayLength(files)));
        env->GetLongArrayRegion(files, 0, static_cast<jsize>(handles.size()), handles.data());
        auto list = std::make_unique<FileWrappers>();
        list->reserve(handles.size());
        for (const jlong file : handles)
            if (!reinterpret_cast<FileWrapper*>(file)->fdescr())
                throw std::invalid_argument("the file is not open");
        for (const jlong file : handles)
            list->push_back(std::move(*reinterpret_cast<FileWrapper*>(file)));
        return reinterpret_cast<jlong>(list.release());
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_deleteFiles(JNIEnv*, jclass, jlong files) {
    delete reinterpret_cast<FileWrappers*>(files);
}

JNIEXPORT jlongArray JNICALL Java_info_quenta_vorl_Bulk_sizes(JNIEnv* env, jclass, jlong hierarchy,
                                                              jboolean weighted) {
    return guarded(env, [&]() -> jlongArray {
        const auto sizes = onHierarchy(hierarchy, weighted, [](const auto& hier) {
            std::vector<jlong> result{static_cast<jlong>(hier.nodes().size()),
                                      static_cast<jlong>(hier.root().size())};
            for (const auto& level : hier.levels()) {
                result.push_back(static_cast<jlong>(level.clusters.size()));
                result.push_back(static_cast<jlong>(level.fullsize));
            }
            return result;
        });
        const jlongArray array = env->NewLongArray(length(sizes.size()));
        if (array) env->SetLongArrayRegion(array, 0, length(sizes.size()), sizes.data());
        return array;
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_members(JNIEnv* env, jclass, jlong hierarchy,
                                                          jboolean weighted, jint level,
                                                          jobjectArray out) {
    guarded(env, [&] {
        Rows rows;
        onHierarchy(hierarchy, weighted, [&](const auto& hier) {
            const auto& levels = hier.levels();
            const auto index = static_cast<std::size_t>(level);
            if (index == levels.size())
                for (const auto* cl : hier.root()) addMembers(rows, hier, *cl);
            else
                for (const auto& cl : levels.at(index).clusters) addMembers(rows, hier, cl);
        });
        rows.store(env, out);
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_owners(JNIEnv* env, jclass, jlong hierarchy,
                                                         jboolean weighted, jint level,
                                                         jobjectArray out) {
    guarded(env, [&] {
        Rows rows;
        onHierarchy(hierarchy, weighted, [&](const auto& hier) {
            if (level < 0)
                for (const auto& node : hier.nodes()) addOwners(rows, node);
            else
                for (const auto& cl : hier.levels().at(static_cast<std::size_t>(level)).clusters)
                    addOwners(rows, cl);
        });
        rows.store(env, out);
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_writeLevels(JNIEnv* env, jclass, jlong hierarchy,
                                                              jboolean weighted, jint first,
                                                              jint last, jfloat step, jint format,
                                                              jstring file) {
    guarded(env, [&] {
        const Text name(env, file);
        onHierarchy(hierarchy, weighted, [&](const auto& hier) {
            writeLevels(
                hier,
                levelsByStep(hier, static_cast<LevelNum>(first), static_cast<LevelNum>(last), step),
                static_cast<ClsOutFmtBase>(format), name.data());
        });
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_writeLevelsAround(JNIEnv* env, jclass,
                                                                    jlong hierarchy,
                                                                    jboolean weighted,
                                                                    jint clusters, jint format,
                                                                    jstring file) {
    guarded(env, [&] {
        const Text name(env, file);
        onHierarchy(hierarchy, weighted, [&](const auto& hier) {
            writeLevels(hier, levelsAround(hier, static_cast<Id>(clusters)),
                        static_cast<ClsOutFmtBase>(format), name.data());
        });
    });
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Bulk_describe(JNIEnv* env, jclass, jlong hierarchy,
                                                           jboolean weighted, jstring file) {
    guarded(env, [&] {
        const Text name(env, file);
        onHierarchy(hierarchy, weighted,
                    [&](const auto& hier) { writeDescription(hier, name.data()); });
    });
}

}  // extern "C"
