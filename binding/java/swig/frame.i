// How a call travels: loading, exceptions, shared handles.

%{
#include "native/frame.hpp"

#include <vorl/graph.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vorl {
using std::shared_ptr;
}
using vorl::Clustering;
using vorl::State;
%}

%pragma(java) jniclasscode=%{
  static {
    NativeLibrary.load();
  }
%}

// No C++ exception may pass through the JVM, be it that of a field, an argument or a result which
// is copied.
%allowexception;
%exception %{
  try {
    $action
  } catch (...) {
    vorl::java::rethrow(jenv);
    return $null;
  }
%}

%typemap(in) SWIGTYPE & %{
  $1 = *($&1_ltype)&$input;
  if (!$1) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "$1_type reference is null");
    return $null;
  }
%}

%typemap(out) SWIGTYPE %{
  try {
    *($&1_ltype*)&$result = new $1_ltype($1);
  } catch (...) {
    vorl::java::rethrow(jenv);
    return $null;
  }
%}

// Fields that are records or lists are set by value.
%typemap(check) SWIGTYPE *links, SWIGTYPE *des, SWIGTYPE *nids, SWIGTYPE *lids, SWIGTYPE *custlevs,
                SWIGTYPE *signifcls, SWIGTYPE *ndshares %{
  if (!$1) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException,
                            "Attempt to dereference null $*1_type");
    return $null;
  }
%}

// What is moved from stays with its owner in Java.
%typemap(in) SWIGTYPE && %{
  $1 = *($&1_ltype)&$input;
  if (!$1) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "$1_type reference is null");
    return $null;
  }
%}
%typemap(javain) SWIGTYPE && "$javaclassname.getCPtr($javainput)"

%typemap(in) unsigned long long (unsigned long long number) %{
  if (!$input) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "BigInteger null");
    return $null;
  }
  if (!vorl::java::fromBigInteger(jenv, $input, number)) return $null;
  $1 = number;
%}
%typemap(out) unsigned long long %{ $result = vorl::java::toBigInteger(jenv, $1); %}

// Graphs and hierarchies are held by shared pointers.
#define SWIG_SHARED_PTR_NAMESPACE vorl
%include <boost_shared_ptr.i>
%include <std_string.i>
%include <std_except.i>

%typemap(in) const std::string & (std::string text) %{
  if (!$input) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException, "null string");
    return $null;
  }
  if (!vorl::java::fromString(jenv, $input, text)) return $null;
  $1 = &text;
%}

%apply const std::string & { std::string && };

// A pointer class: its handle is the address of a shared pointer, which is never an empty one.
%define %pointer_frame(PROXY, TYPE...)
%typemap(out) vorl::shared_ptr<TYPE> %{
  *($&1_ltype*)&$result = $1 ? new $1_ltype($1) : 0;
%}
%typemap(out) vorl::shared_ptr<TYPE> * %{
  *($&1_ltype)&$result = ($1 && *$1) ? new $*1_ltype(*$1) : 0;
  if ($owner) delete $1;
%}
%typemap(in) vorl::shared_ptr<TYPE> ($&1_type argp) %{
  argp = *($&1_ltype*)&$input;
  if (!argp) {
    SWIG_JavaThrowException(jenv, SWIG_JavaNullPointerException,
                            "Attempt to dereference null $1_type");
    return $null;
  }
  $1 = *argp;
%}
%typemap(in) vorl::shared_ptr<TYPE> * %{ $1 = *($&1_ltype)&$input; %}
%typemap(typecheck, precedence=SWIG_TYPECHECK_POINTER) vorl::shared_ptr<TYPE> ""
%typemap(jstype) vorl::shared_ptr<TYPE>, vorl::shared_ptr<TYPE> * #PROXY
%typemap(javain) vorl::shared_ptr<TYPE> %{PROXY.getCPtr($javainput)%}
%typemap(javaout) vorl::shared_ptr<TYPE> {
    long cPtr = $jnicall;
    return (cPtr == 0) ? null : new PROXY(cPtr, true);
  }
%enddef

// The pointer to an object that has a proxy class; in Java it is one of these objects.
%define %shared_handle(PROXY, POINTER, TYPE...)
%shared_ptr(TYPE)
%pointer_frame(POINTER, TYPE)
%typemap(javabody) TYPE %{
  private transient long swigCPtr;
  private transient boolean swigCMemOwn;

  // Told from the public constructors, some of which take a number and a boolean, by its place.
  $javaclassname(Void place, long cPtr, boolean cMemoryOwn) {
    swigCMemOwn = cMemoryOwn;
    swigCPtr = cPtr;
  }

  protected static long getCPtr($javaclassname obj) {
    return (obj == null) ? 0 : obj.swigCPtr;
  }

  // The handle, given up by this object; 0 if the object doesn't own one.
  synchronized long swigDisown() {
    long handle = swigCMemOwn ? swigCPtr : 0;
    swigCMemOwn = false;
    return handle;
  }
%}
%typemap(javaconstruct) TYPE {
    this(null, $imcall, true);
  }
%typemap(javabase) vorl::shared_ptr<TYPE> #PROXY
%typemap(javabody) vorl::shared_ptr<TYPE> %{
  protected $javaclassname(long cPtr, boolean cMemoryOwn) {
    super(null, cPtr, cMemoryOwn);
  }

  protected static long getCPtr($javaclassname obj) {
    return PROXY.getCPtr(obj);
  }
%}
%typemap(javadestruct, methodname="delete",
         methodmodifiers="public synchronized") vorl::shared_ptr<TYPE> {
    long handle = swigDisown();
    if (handle != 0) $imclassname.delete_$javaclassname(handle);
    super.delete();
  }
%enddef
