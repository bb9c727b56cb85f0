// Records of options, and facts about the library.

%{
#include <vorl/types/options.hpp>

namespace vorl::java {

// Keeps a text that the library only refers to, for as long as the process lives.
inline const char* lasting(const char* text) {
    static std::set<std::string> texts;
    return text ? texts.insert(text).first->c_str() : nullptr;
}

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
            using vorl::java::lasting;
            return new vorl::BuildInfo{lasting(revision), clustering, lasting(compiler),
                                       lasting(langenv), lasting(time)};
        }
    }
    std::string rev() const;
    std::string summary() const;
};

const BuildInfo& libBuild();

}  // namespace vorl
