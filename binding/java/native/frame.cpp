#include "frame.hpp"

#include <exception>
#include <new>
#include <string>

namespace vorl::java {

void raise(JNIEnv* env, const char* type, const char* text) {
    env->ExceptionClear();
    if (const jclass found = env->FindClass(type)) env->ThrowNew(found, text);
}

void rethrow(JNIEnv* env) {
    try {
        throw;
    } catch (const std::bad_alloc& err) {
        raise(env, "java/lang/OutOfMemoryError", err.what());
    } catch (const std::exception& err) {
        raise(env, "java/lang/RuntimeException", err.what());
    } catch (const std::string& text) {
        raise(env, "java/lang/RuntimeException", text.c_str());
    } catch (...) {
        raise(env, "java/lang/UnknownError", "exception of an unknown type");
    }
}

bool fromBigInteger(JNIEnv* env, jobject number, unsigned long long& value) {
    const jclass type = env->GetObjectClass(number);
    const jmethodID toByteArray = env->GetMethodID(type, "toByteArray", "()[B");
    if (!toByteArray) return false;
    const auto bytes = static_cast<jbyteArray>(env->CallObjectMethod(number, toByteArray));
    if (env->ExceptionCheck()) return false;
    const jsize count = env->GetArrayLength(bytes);
    jbyte* const data = env->GetByteArrayElements(bytes, nullptr);
    if (!data) return false;
    value = 0;
    if (count > 0) value = static_cast<unsigned long long>(data[0]);
    for (jsize i = 1; i < count; ++i) value = value << 8 | static_cast<unsigned char>(data[i]);
    env->ReleaseByteArrayElements(bytes, data, JNI_ABORT);
    env->DeleteLocalRef(bytes);
    env->DeleteLocalRef(type);
    return true;
}

jobject toBigInteger(JNIEnv* env, unsigned long long value) {
    constexpr jsize size = 9;
    jbyte data[size] = {0};
    for (jsize i = size - 1; i > 0; --i, value >>= 8) data[i] = static_cast<jbyte>(value & 0xFF);
    const jbyteArray bytes = env->NewByteArray(size);
    if (!bytes) return nullptr;
    env->SetByteArrayRegion(bytes, 0, size, data);
    const jclass type = env->FindClass("java/math/BigInteger");
    const jmethodID make = type ? env->GetMethodID(type, "<init>", "([B)V") : nullptr;
    const jobject number = make ? env->NewObject(type, make, bytes) : nullptr;
    env->DeleteLocalRef(bytes);
    return number;
}

bool fromString(JNIEnv* env, jstring string, std::string& text) {
    const char* const characters = env->GetStringUTFChars(string, nullptr);
    if (!characters) return false;
    bool copied = true;
    try {
        text = characters;
    } catch (...) {
        rethrow(env);
        copied = false;
    }
    env->ReleaseStringUTFChars(string, characters);
    return copied;
}

}  // namespace vorl::java
