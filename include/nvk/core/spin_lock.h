// A short lock for a few instructions of work, such as a free-list pop. It
// never sleeps in the kernel on the common path, which a mutex does.
#pragma once

#include <atomic>
#include <thread>

namespace nvk {

class SpinLock {
public:
    void lock() {
        for (int spins = 0; m_Locked.exchange(true, std::memory_order_acquire); ++spins) {
            while (m_Locked.load(std::memory_order_relaxed)) {
                if (spins++ > 64) {
                    std::this_thread::yield();
                } else {
                    __builtin_ia32_pause();
                }
            }
        }
    }
    void unlock() { m_Locked.store(false, std::memory_order_release); }

private:
    std::atomic<bool> m_Locked{false};
};

}  // namespace nvk
