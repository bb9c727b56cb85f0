// How values and exceptions travel between the library and Java.
#pragma once

#include <jni.h>

#include <string>
#include <string_view>

namespace vorl::java {

/// A text in UTF-8 as a java.lang.String; bytes that are no UTF-8, as a file may hold, are
/// replaced.
/// @return null if Java raised an exception
jstring toString(JNIEnv* env, std::string_view text);

/// Raises a Java exception in place of a pending one.
/// @param type name of the class with slashes
void raise(JNIEnv* env, const char* type, std::string_view text);

/// Turns the C++ exception being handled into a Java exception with its text: OutOfMemoryError
/// where memory ran out, else RuntimeException.
void rethrow(JNIEnv* env);

/// The low 64 bits of a java.math.BigInteger.
/// @return false if Java raised an exception
bool fromBigInteger(JNIEnv* env, jobject number, unsigned long long& value);

/// @return null if Java raised an exception
jobject toBigInteger(JNIEnv* env, unsigned long long value);

/// A copy of a java.lang.String.
/// @return false if Java raised an exception
bool fromString(JNIEnv* env, jstring string, std::string& text);

}  // namespace vorl::java
