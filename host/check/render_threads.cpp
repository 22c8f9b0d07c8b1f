#include "host/check/render_threads.h"

#include "host/base/thread_role.h"
#include "host/check/blackboard.h"

namespace velm::host {

RenderThreads::~RenderThreads() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    begin_.notify_all();
    for (std::thread &thread : threads_) thread.join();
}

void RenderThreads::run(int count, const std::function<void(int)> &work) {
    for (int index = static_cast<int>(threads_.size()); index < count; ++index)
        threads_.emplace_back([this, index] { live(index); });
    std::unique_lock lock(mutex_);
    work_ = &work;
    count_ = working_ = count;
    started_ = 0;
    ++slice_;
    begin_.notify_all();
    done_.wait(lock, [&] { return working_ == 0; });
}

void RenderThreads::live(int index) {
    const SlotScope slot(index);
    std::unique_lock lock(mutex_);
    for (long last = 0;;) {
        begin_.wait(lock, [&] { return over_ || (slice_ != last && index < count_); });
        if (over_) return;
        last = slice_;
        // Only when all are awake, so that none is done before another has begun.
        if (++started_ == count_) begin_.notify_all();
        begin_.wait(lock, [&] { return started_ == count_; });
        lock.unlock();
        {
            const RoleScope role(ThreadRole::render);
            (*work_)(index);
        }
        lock.lock();
        if (--working_ == 0) done_.notify_all();
    }
}

} // namespace velm::host
