// Records of options, and facts about the library.

%{
#include <vorl/types/options.hpp>

namespace vorl::java {

// A record with the texts that it refers to.
struct OwnBuildInfo : BuildInfo {
    std::vector<std::string> texts;

    explicit OwnBuildInfo(Clustering kind) : BuildInfo{} {
        clustering = kind;
        texts.reserve(4);
    }
    const char* keep(const char* text) {
        return text ? texts.emplace_back(text).c_str() : nullptr;
    }
};

}  // namespace vorl::java
%}

// The two records of `OutputOptions` share one storage: setting one makes it the live one.
%typemap(memberin) vorl::CustlevsOptions custlevs %{ new (&$1) vorl::CustlevsOptions(*$input); %}
%typemap(memberin) vorl::SignifclsExtoptions signifcls %{
  new (&$1) vorl::SignifclsExtoptions(*$input);
%}

namespace vorl {

struct ClusterOptions {
    float gamma;
    float filterMarg;
    Validation validation;
    Coupling rootMax;
    Reduction reduction;
    Speedup speedup;
    float gainMarg;
    bool modtrace;

    ClusterOptions();
    void validate() const;
};

struct CustlevsOptions {
    LevMargKind levmarg;
    LevelNum margmin;
    LevelNum margmax;
    float clsrstep;

    void validate() const;
    void reset();
};

class SignifclsOptions {
public:
    static const float dropRatio;
    float densdrop;
    float wrstep;
    unsigned int szmin;
    bool wrange;

    explicit SignifclsOptions(bool extended = false);
    virtual ~SignifclsOptions();
    virtual void reset(bool extended);
    %extend {
        void reset() { self->reset(false); }
    }
    void validate() const;
};

class SignifclsExtoptions : public SignifclsOptions {
public:
    %immutable;
    unsigned int (*clszminf)(unsigned int);
    %mutable;

    SignifclsExtoptions();
    virtual ~SignifclsExtoptions();
    virtual void reset(bool extended);
    %extend {
        void reset() { self->reset(false); }
    }
    void setClszminf(SzFnName name);
};

struct OutputOptions {
    ClsOutFmtBase clsfmt;
    CustlevsOptions custlevs;
    SignifclsExtoptions signifcls;
    std::string clsfile;
    bool fltMembers;

    OutputOptions();
    ~OutputOptions();
};

struct InpOptions {
    FileFormat format;
    std::string filename;
    bool sumdups;
    bool shuffle;
};

struct BuildInfo {
    %immutable;
    const char* revision;
    Clustering clustering;
    const char* compiler;
    const char* langenv;
    const char* time;
    %mutable;

    %extend {
        BuildInfo(const char* revision, Clustering clustering, const char* compiler,
                  const char* langenv, const char* time) {
            auto info = std::make_unique<vorl::java::OwnBuildInfo>(clustering);
            info->revision = info->keep(revision);
            info->compiler = info->keep(compiler);
            info->langenv = info->keep(langenv);
            info->time = info->keep(time);
            return info.release();
        }
        ~BuildInfo() { delete static_cast<vorl::java::OwnBuildInfo*>(self); }
    }
    std::string rev() const;
    std::string summary() const;
};

const BuildInfo& libBuild();

}  // namespace vorl
