#pragma once

#include <memory>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace platform {

/// The calling thread's T, made at the first call and destroyed when the thread ends. Null when memory runs
/// out, and when it is destroyed for good: a script's collectors may still run, and ask, behind that. A
/// library uses one type for one thing. The T lies in a block of its own: what a library itself keeps per
/// thread must be small, or no host can load it late.
template<class T>
T* perThread() noexcept;

#if defined(_WIN32)

/// A slot of the system's for one pointer per thread. Not `thread_local`: this compiler's run-time library
/// frees a thread's variables before it runs their destructors.
template<class T>
class ThreadSlot {
public:
    ThreadSlot() : index_(FlsAlloc(&end)) {}
    /// Ends the values of all threads.
    ~ThreadSlot()
    {
        const DWORD index = index_;
        index_ = FLS_OUT_OF_INDEXES;
        FlsFree(index);
    }
    ThreadSlot(const ThreadSlot&) = delete;
    ThreadSlot& operator=(const ThreadSlot&) = delete;

    T* value() noexcept
    {
        if (void* known = FlsGetValue(index_)) return static_cast<T*>(known);
        T* made = new (std::nothrow) T;
        if (made && FlsSetValue(index_, made)) return made;
        delete made;
        return nullptr;
    }

private:
    static void WINAPI end(void* value) { delete static_cast<T*>(value); }

    DWORD index_;
};

template<class T>
T* perThread() noexcept
{
    static ThreadSlot<T> slot;
    return slot.value();
}

#else

template<class T>
struct ThreadOwner {
    ~ThreadOwner() { isGone = true; }

    std::unique_ptr<T> value;
    static inline constinit thread_local bool isGone = false;
};

template<class T>
T* perThread() noexcept
{
    if (ThreadOwner<T>::isGone) return nullptr;
    thread_local ThreadOwner<T> owner;
    if (!owner.value) owner.value.reset(new (std::nothrow) T);
    return owner.value.get();
}

#endif

} // namespace platform
