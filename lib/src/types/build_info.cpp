#include <vorl/types/text.hpp>

#include <cstring>

// Number of commits, a slash and twelve digits of the commit; given by the build.
#ifndef VORL_REVISION_TEXT
#define VORL_REVISION_TEXT "0/000000000000"
#endif

namespace vorl {

namespace {

constexpr const char* GENERATOR = "4.1.0";

const BuildInfo INFO{VORL_REVISION_TEXT,
                     Clustering::FUZZY_OVP | Clustering::MCANDS_NOFLT | Clustering::OVERLAP_LINKS |
                         Clustering::AUTO_GAMMA,
#ifdef __clang__
                     "clang " __clang_version__ " (4.1.0)",
#else
                     "g++ " __VERSION__ " (4.1.0)",
#endif
                     "C++20", __DATE__ " " __TIME__};

/// A caller's record may leave texts out.
const char* shown(const char* text) { return text ? text : ""; }

}  // namespace

std::string BuildInfo::rev() const {
    return std::string(shown(revision), std::strcspn(shown(revision), "/"));
}

std::string BuildInfo::summary() const {
    return std::string("Revision: ") + shown(revision) + "\nClustering: " + to_string(clustering) +
           "\nCompiler: " + shown(compiler) + "\nLangEnv: " + shown(langenv) +
           "\nTime: " + shown(time) + "\n";
}

const BuildInfo& libBuild() { return INFO; }

const char* swigRevision() { return GENERATOR; }

}  // namespace vorl
