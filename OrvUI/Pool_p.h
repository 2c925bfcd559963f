#pragma once

#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <memory>
#include <type_traits>

namespace orv {

/// Runs a blocking function of values in the pool.
template <typename Work>
auto runIn(QThreadPool& pool, Work work) {
    using Result = std::invoke_result_t<Work&>;
    const auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    pool.start([promise, work = std::move(work)]() mutable {
        if constexpr (std::is_void_v<Result>) {
            work();
        } else {
            promise->addResult(work());
        }
        promise->finish();
    });
    return promise->future();
}

/// The end of an asynchronous operation that takes several turns of the event loop. Copies stand for the same end; when
/// the last one goes without `finish`, the future ends as cancelled.
class Completion {
public:
    Completion() : m_promise(std::make_shared<QPromise<void>>()) { m_promise->start(); }

    [[nodiscard]] QFuture<void> future() const { return m_promise->future(); }
    void finish() const { m_promise->finish(); }

private:
    std::shared_ptr<QPromise<void>> m_promise;
};

} // namespace orv
