#include <vorl/types/text.hpp>

#include <cstring>

// Number of commits, a slash and twelve digits of the commit; given by the build.
#ifndef VORL_REVISION_TEXT
#define VORL_REVISION_TEXT "0/000000000000"
#endif

// The revision of the generator of the binding, if that is built.
#ifndef VORL_SWIG_VERSION
#define VORL_SWIG_VERSION "none"
#endif

namespace vorl {

namespace {

const BuildInfo INFO{VORL_REVISION_TEXT,
                     Clustering::FUZZY_OVP | Clustering::MCANDS_NOFLT | Clustering::OVERLAP_LINKS |
                         Clustering::AUTO_GAMMA,
#ifdef __clang__
                     "clang " __clang_version__ " (" VORL_SWIG_VERSION ")",
#else
                     "g++ " __VERSION__ " (" VORL_SWIG_VERSION ")",
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

const char* swigRevision() { return VORL_SWIG_VERSION; }

}  // namespace vorl
