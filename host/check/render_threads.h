// Render threads that live on from one slice of a picture to the next, as those of a host do.
#pragma once

#include "module/host.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace velm::host {

// Between two slices the threads are parked: no sample is being evaluated, and the threads have no role.
// [interface thread]
class RenderThreads {
  public:
    RenderThreads() = default;
    ~RenderThreads();
    RenderThreads(const RenderThreads &) = delete;
    RenderThreads &operator=(const RenderThreads &) = delete;

    // Runs something on the first `count` threads, which start together, and waits until all are parked again. A thread
    // is told its number, from 0, which stays its own. `count` from 1 to kMaxThreads.
    void run(int count, const std::function<void(int thread)> &work);

  private:
    void live(int index);

    std::mutex mutex_;
    std::condition_variable begin_, done_;
    std::vector<std::thread> threads_;
    const std::function<void(int)> *work_ = nullptr;
    int count_ = 0, started_ = 0, working_ = 0; // of the slice that is running
    long slice_ = 0;                            // 0: none yet
    bool over_ = false;
};

} // namespace velm::host
