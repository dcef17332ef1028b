/// Tells the thread sanitizer what it cannot see, QtCore not being built with it: locks, without which everything that
/// a mutex guards would look like a race, and the release of shared strings. Linked into tests that run under it.
#include <QtCore/QMutex>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace {

template <typename Function> Function *ofQt(const char *symbol)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, symbol));
}

} // namespace

/// A string's last owner frees it, which only the atomic counting inside QtCore makes safe.
extern "C" const char *__tsan_default_suppressions() { return "called_from_lib:libQt5Core.so\n"; }

void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static auto *const LOCK_OF_QT = ofQt<void(QMutex *)>("_ZN6QMutex4lockEv");
    __tsan_mutex_pre_lock(this, 0);
    LOCK_OF_QT(this);
    __tsan_mutex_post_lock(this, 0, 0);
}

void QMutex::unlock() noexcept
{
    static auto *const UNLOCK_OF_QT = ofQt<void(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_mutex_pre_unlock(this, 0);
    UNLOCK_OF_QT(this);
    __tsan_mutex_post_unlock(this, 0);
}
