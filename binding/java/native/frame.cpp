#include "frame.hpp"

#include <exception>
#include <new>
#include <string>

namespace vorl::java {

jstring toString(JNIEnv* env, std::string_view text) {
    const auto size = static_cast<jsize>(text.size());
    const jbyteArray bytes = env->NewByteArray(size);
    if (!bytes) return nullptr;
    env->SetByteArrayRegion(bytes, 0, size, reinterpret_cast<const jbyte*>(text.data()));
    const jclass type = env->FindClass("java/lang/String");
    const jmethodID make =
        type ? env->GetMethodID(type, "<init>", "([BLjava/lang/String;)V") : nullptr;
    const jstring encoding = make ? env->NewStringUTF("UTF-8") : nullptr;
    const jobject made = encoding ? env->NewObject(type, make, bytes, encoding) : nullptr;
    env->DeleteLocalRef(encoding);
    env->DeleteLocalRef(type);
    env->DeleteLocalRef(bytes);
    return static_cast<jstring>(made);
}

void raise(JNIEnv* env, const char* type, std::string_view text) {
    env->ExceptionClear();
    const jstring message = toString(env, text);
    const jclass found = message ? env->FindClass(type) : nullptr;
    const jmethodID make =
        found ? env->GetMethodID(found, "<init>", "(Ljava/lang/String;)V") : nullptr;
    const jobject made = make ? env->NewObject(found, make, message) : nullptr;
    if (made) env->Throw(static_cast<jthrowable>(made));
}

void rethrow(JNIEnv* env) {
    try {
        throw;
    } catch (const std::bad_alloc& err) {
        raise(env, "java/lang/OutOfMemoryError", err.what());
    } catch (const std::exception& err) {
        raise(env, "java/lang/RuntimeException", err.what());
    } catch (const std::string& text) {
        raise(env, "java/lang/RuntimeException", text);
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
    if (!bytes) {
        raise(env, "java/lang/NullPointerException", "toByteArray() of a BigInteger is null");
        return false;
    }
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
