// Native methods of info.quenta.vorl.Work: how far the work of a thread is, and its end on demand.
#include "frame.hpp"

#include <vorl/types/progress.hpp>

#include <array>

namespace vorl::java {

namespace {

struct Work {
    Progress progress;
    ProgressScope scope{progress};
};

Work& work(jlong handle) { return *reinterpret_cast<Work*>(handle); }

jlong signedOr(Size value, Size none) { return value == none ? -1 : static_cast<jlong>(value); }

}  // namespace

extern "C" {

JNIEXPORT jlong JNICALL Java_info_quenta_vorl_Work_begin(JNIEnv* env, jclass) {
    try {
        return reinterpret_cast<jlong>(new Work);
    } catch (...) {
        rethrow(env);
        return 0;
    }
}

JNIEXPORT jstring JNICALL Java_info_quenta_vorl_Work_state(JNIEnv* env, jclass, jlong handle,
                                                           jlongArray numbers) {
    const Progress::State state = work(handle).progress.state();
    const std::array<jlong, 3> values{signedOr(state.level, Progress::NO_LEVEL),
                                      static_cast<jlong>(state.done),
                                      static_cast<jlong>(state.total)};
    env->SetLongArrayRegion(numbers, 0, values.size(), values.data());
    return state.stage && !env->ExceptionCheck() ? toString(env, state.stage) : nullptr;
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Work_cancel(JNIEnv*, jclass, jlong handle) {
    work(handle).progress.cancel();
}

JNIEXPORT void JNICALL Java_info_quenta_vorl_Work_end(JNIEnv*, jclass, jlong handle) {
    delete &work(handle);
}
}

}  // namespace vorl::java
