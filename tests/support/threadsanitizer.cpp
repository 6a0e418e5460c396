// SPDX-License-Identifier: MIT
// Shows the thread sanitizer what it cannot see in a Qt that was built without it: linked into
// every test of a thread sanitizer build. Nothing of our own code is hidden from it.
#include <QMutex>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

/// What Qt itself does with memory, behind atomic counters of its own, is Qt's affair.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions()
{
    return "called_from_lib:libQt5Core.so\n";
}

namespace {

// These stand before the functions of the same name in Qt's library, do what those do, and report
// it.
template <typename Function>
Function* qtFunction(const char* mangledName)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, mangledName));
}

} // namespace

__attribute__((visibility("default"))) void QMutex::lock() QT_MUTEX_LOCK_NOEXCEPT
{
    static auto* const qtLock = qtFunction<void(QMutex*)>("_ZN6QMutex4lockEv");
    __tsan_mutex_pre_lock(this, __tsan_mutex_linker_init);
    qtLock(this);
    __tsan_mutex_post_lock(this, __tsan_mutex_linker_init, 0);
}

__attribute__((visibility("default"))) void QMutex::unlock() Q_DECL_NOTHROW
{
    static auto* const qtUnlock = qtFunction<void(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_mutex_pre_unlock(this, 0);
    qtUnlock(this);
    __tsan_mutex_post_unlock(this, 0);
}
