// Lets a number of threads go on together once all of them have arrived.
// std::barrier would do, but the Windows build's runtime waits on it through
// a shared table of waiters that can lose a wake-up: a few threads then wait
// for ever once the others have gone through. A condition variable over a
// count has no such window.
#pragma once

#include <condition_variable>
#include <mutex>

namespace nvk::test {

class StartGate {
public:
    explicit StartGate(int threads) : m_Waiting(threads) {}

    void ArriveAndWait() {
        std::unique_lock lock(m_Lock);
        if (--m_Waiting == 0) {
            m_Open.notify_all();
        } else {
            m_Open.wait(lock, [this] { return m_Waiting == 0; });
        }
    }

private:
    std::mutex m_Lock;
    std::condition_variable m_Open;
    int m_Waiting;
};

}  // namespace nvk::test
