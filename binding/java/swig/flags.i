// Enumerations, their texts and operators. `State` and `Clustering` stay opaque to Java: they
// travel as handles.

%{
#include <vorl/types/flags.hpp>
#include <vorl/types/text.hpp>
#include <vorl/types/trace.hpp>

namespace vorl {
inline bool unequal(State state, std::uint8_t mask) { return !(state == mask); }
}
%}

// A value of a flag enumeration can combine several enumerators.
%define %flags(ENUM)
%typemap(javainterfaces) enum ENUM "java.io.Serializable"
%typemap(javabody) enum ENUM %{
  private static final long serialVersionUID = 1;
  private final int swigValue;
  private final String swigName;

  private $javaclassname(String swigName, int swigValue) {
    this.swigName = swigName;
    this.swigValue = swigValue;
  }

  public final int swigValue() {
    return swigValue;
  }

  /** The value of a mask, which may combine several enumerators. */
  public static $javaclassname swigToEnum(int swigValue) {
    for ($javaclassname value : new $javaclassname[] { $enumvalues })
      if (value.swigValue == swigValue) return value;
    return new $javaclassname("0x" + Integer.toHexString(swigValue), swigValue);
  }

  @Override
  public boolean equals(Object other) {
    return other instanceof $javaclassname && (($javaclassname) other).swigValue == swigValue;
  }

  @Override
  public int hashCode() {
    return swigValue;
  }

  @Override
  public String toString() {
    return swigName;
  }
%}
%enddef

%flags(vorl::ClsOutFmt)
%flags(vorl::Reduction)
%flags(vorl::IntrinsicsFlags)

// The extension lists have the names of the formats; of the formats' own values two are named.
%javaconst(1) vorl::FileFormat::RCG;
%javaconst(1) vorl::FileFormat::NSE;
%javaconst(1) vorl::FileFormat::NSA;
%javaconst(1) vorl::FileFormat::CNL;
%javaconst(1) vorl::FileFormat::RHB;

%rename(bitAnd) operator&;
%rename(bitOr) operator|;
%rename(bitNot) operator~;
%rename(bitAndAssign) operator&=;
%rename(bitOrAssign) operator|=;
%rename(equal) operator==;
%rename(assign) operator=;

namespace vorl {

typedef unsigned char ClsOutFmtBase;

enum class Validation { NONE = 0, STANDARD = 0xAA, SEVERE = 0xFF };

enum class Speedup { NONE = 0, COARSE = 0xAA, ORDERDEP = 0xFF };

enum class Reduction {
    NONE = 0,
    ACCURATE = 1,
    MEAN = 2,
    SEVERE = 3,
    CORE_MASK = 0x0F,
    SKIP_NODES = 0x10,
    SKIP_CLUSTERS = 0x20,
    SKIP_MASK = 0x30,
    CRITERIA_WEIGHT = 0x80,
    CRITERIA_MASK = 0x80
};

enum class LevMargKind { NONE = 0, CLSNUM = 0x55, LEVID = 0xAA, LEVSTEPNUM = 0xFF };

enum class SzFnName {
    NONE = 0,
    CLSSZ_ROOT2 = 2,
    CLSSZ_ROOT4 = 4,
    CLSSZ_LOG2 = 0x12,
    CLSSZ_LOGE = 0x13
};

enum class FileFormat {
    UNKNOWN = 0,
    RCG = 1,
    DEFAULT_INPUT = 1,
    NSE = 2,
    NSA = 3,
    CNL = 4,
    RHB = 5
};

enum class ClsOutFmt {
    NONE = 0,
    ROOT = 1,
    PERLEVEL = 2,
    CUSTLEVS = 3,
    CUSTLEVS_APPROXNUM = 4,
    ALLCLS = 5,
    HIER = 6,
    SIGNIF_OWNSDIR = 8,
    RANGE_SIGNIF_LOW = 8,
    SIGNIF_OWNADIR = 9,
    SIGNIF_OWNSHIER = 10,
    SIGNIF_OWNAHIER = 11,
    SIGNIF_DEFAULT = 12,
    RANGE_SIGNIF_HIGH = 12,
    MASK_OUTSTRUCT = 0x0F,
    MAXSHARE = 0x10,
    MASK_FILTERING = 0x10,
    PURE = 0x20,
    SIMPLE = 0x40,
    SHARED = 0x80,
    EXTENDED = 0xC0,
    MASK_FILEFMT = 0xE0,
    DEFAULT = 0xC5
};

enum class IntrinsicsFlags { NONE = 0, CONDUCTANCE = 1, MODULARITY = 2, GAMMA = 4, ALL = 0xFF };

%constant const char* RCG = vorl::extensions::RCG;
%constant const char* NSE = vorl::extensions::NSE;
%constant const char* NSA = vorl::extensions::NSA;
%constant const char* CNL = vorl::extensions::CNL;
%constant const char* RHB = vorl::extensions::RHB;

unsigned char toMask(State value);
unsigned char toMask(Clustering value);
unsigned char toMask(ClsOutFmt value);
unsigned char toMask(SzFnName value);
unsigned char toMask(LevMargKind value);
unsigned char toMask(Reduction value);
unsigned char toMask(Speedup value);
unsigned char toMask(Validation value);
unsigned char toMask(IntrinsicsFlags value);

State toState(unsigned char mask);
Clustering toClustering(unsigned char mask);
ClsOutFmt toClsOutFmt(unsigned char mask);
SzFnName toSzFnName(unsigned char mask);
LevMargKind toLevMargKind(unsigned char mask);
Reduction toReduction(unsigned char mask);
Speedup toSpeedup(unsigned char mask);
Validation toValidation(unsigned char mask);
IntrinsicsFlags toIntrinsicsFlags(unsigned char mask);

State operator&(State state, unsigned char mask);
unsigned char operator&(State a, State b);
Clustering operator&(Clustering value, unsigned char mask);
unsigned char operator&(Clustering a, Clustering b);
ClsOutFmtBase operator&(ClsOutFmt a, ClsOutFmt b);
Reduction operator&(Reduction a, Reduction b);
IntrinsicsFlags operator&(IntrinsicsFlags a, IntrinsicsFlags b);

unsigned char operator|(State a, State b);
unsigned char operator|(unsigned char mask, State state);
Clustering operator|(Clustering a, Clustering b);
Reduction operator|(Reduction a, Reduction b);

unsigned char operator~(State state);
Reduction operator~(Reduction value);

State& operator&=(State& state, unsigned char mask);
State& operator&=(State& state, State other);
ClsOutFmtBase& operator&=(ClsOutFmtBase& mask, ClsOutFmt flag);
Reduction& operator&=(Reduction& a, Reduction b);

State& operator|=(State& state, unsigned char mask);
State& operator|=(State& state, State other);
ClsOutFmtBase& operator|=(ClsOutFmtBase& mask, ClsOutFmt flag);
Reduction& operator|=(Reduction& a, Reduction b);
IntrinsicsFlags operator|=(IntrinsicsFlags& a, IntrinsicsFlags b);

bool operator==(State state, unsigned char mask);
bool unequal(State state, unsigned char mask);

bool xpropagated(State state);
bool xinterlevprop(State state);
bool xfurtherprop(State state);
bool xperpair(State state);

std::string to_string(State value, bool bitstr = false);
std::string to_string(Clustering value, bool bitstr = false);
std::string to_string(SzFnName value, bool bitstr = false);
std::string to_string(LevMargKind value, bool bitstr = false);
std::string to_string(ClsOutFmt value, bool bitstr = false);
std::string to_string(Reduction value, bool bitstr = false);
std::string to_string(Speedup value, bool bitstr = false);
std::string to_string(Validation value, bool bitstr = false);
std::string to_string(IntrinsicsFlags value, bool bitstr = false);
std::string to_string(FileFormat value, bool bitstr = false);
std::string strClsOutFmt(ClsOutFmtBase mask, bool bitstr = false);

bool isset(ClsOutFmtBase mask, ClsOutFmt flag);
bool anycustlevs(ClsOutFmtBase mask);
bool anysignif(ClsOutFmtBase mask);

std::string toYesNo(bool value);
std::string pad(std::string&& text, unsigned char width, char fill = ' ', bool front = true);

%constant unsigned char rbmin = vorl::rbmin;
%constant unsigned char rbmax = vorl::rbmax;

const char* swigRevision();

void traceBuffered(bool buffered);
bool traceBuffered();

}  // namespace vorl
