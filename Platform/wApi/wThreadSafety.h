#pragma once

// Annotations for clang's thread-safety analysis: which lock guards a member, and which function takes or needs a lock.
// They are empty for GCC, which does not know them.
#ifdef __clang__
#define ZU_THREAD_ANNOTATION(mark) __attribute__((mark))
#else
#define ZU_THREAD_ANNOTATION(mark)
#endif

#define ZU_CAPABILITY(name) ZU_THREAD_ANNOTATION(capability(name))
#define ZU_SCOPED_CAPABILITY ZU_THREAD_ANNOTATION(scoped_lockable)
#define ZU_GUARDED_BY(lock) ZU_THREAD_ANNOTATION(guarded_by(lock))
#define ZU_REQUIRES(...) ZU_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ZU_ACQUIRE(...) ZU_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define ZU_RELEASE(...) ZU_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define ZU_EXCLUDES(...) ZU_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
/// For a function that the analysis cannot follow. A comment beside it says why the function is correct.
#define ZU_NO_THREAD_SAFETY_ANALYSIS ZU_THREAD_ANNOTATION(no_thread_safety_analysis)
