// Which lock guards what, in the words of clang's analysis (-Wthread-safety). Other compilers see nothing.
#ifndef ORVA_FD_MANAGER_THREAD_ANNOTATIONS_H
#define ORVA_FD_MANAGER_THREAD_ANNOTATIONS_H

#if defined(__clang__)
#define ORVA_LOCK_ATTRIBUTE(words) __attribute__((words))
#else
#define ORVA_LOCK_ATTRIBUTE(words)
#endif

#define ORVA_CAPABILITY ORVA_LOCK_ATTRIBUTE(capability("mutex"))
#define ORVA_SCOPED_CAPABILITY ORVA_LOCK_ATTRIBUTE(scoped_lockable)
#define ORVA_GUARDED_BY(lock) ORVA_LOCK_ATTRIBUTE(guarded_by(lock))
#define ORVA_REQUIRES(...) ORVA_LOCK_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ORVA_ACQUIRE(...) ORVA_LOCK_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ORVA_RELEASE(...) ORVA_LOCK_ATTRIBUTE(release_capability(__VA_ARGS__))

// For what takes and gives the lock itself, and for what runs alone or on memory that nobody else can know; the reason
// stands beside each.
#define ORVA_LOCKS_UNCHECKED ORVA_LOCK_ATTRIBUTE(no_thread_safety_analysis)

#endif
