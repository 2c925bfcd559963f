#pragma once

#include <QCoreApplication>
#include <QFuture>
#include <QFutureWatcher>
#include <QPromise>
#include <QThread>

#include <memory>
#include <type_traits>

/// First line of every public function of an object that lives on the main thread.
#define ORV_ASSERT_MAIN_THREAD()                                                                                       \
    Q_ASSERT_X(                                                                                                        \
        QThread::currentThread() == QCoreApplication::instance()->thread(), Q_FUNC_INFO,                               \
        "the model is used on the main thread only")

namespace orv {

/// Calls `handler` on `context`'s thread when `future` has finished, with its result unless that is void. When
/// `context` dies first, or the future ends without a result, the handler is never called.
///
/// (`QFuture::then(context, ...)` of Qt 6.4 aborts when the context dies first.)
template <typename T, typename Handler>
void onFinished(const QFuture<T>& future, QObject* context, Handler&& handler) {
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(
        watcher, &QFutureWatcher<T>::finished, context, [watcher, handler = std::forward<Handler>(handler)]() mutable {
            watcher->deleteLater();
            if constexpr (std::is_void_v<T>) {
                if (!watcher->isCanceled()) {
                    handler();
                }
            } else if (watcher->future().resultCount() > 0) {
                handler(watcher->result());
            }
        });
    watcher->setFuture(future);
}

/// A future that has finished already.
inline QFuture<void> finishedFuture() {
    QPromise<void> promise;
    promise.start();
    promise.finish();
    return promise.future();
}

/// A future that finishes when all of them have; never when `context` dies first.
inline QFuture<void> whenAll(const QList<QFuture<void>>& futures, QObject* context) {
    if (futures.isEmpty()) {
        return finishedFuture();
    }
    struct Pending {
        QPromise<void> promise;
        qsizetype left = 0;
    };
    const auto pending = std::make_shared<Pending>();
    pending->left = futures.size();
    pending->promise.start();
    for (const QFuture<void>& future : futures) {
        onFinished(future, context, [pending] {
            if (--pending->left == 0) {
                pending->promise.finish();
            }
        });
    }
    return pending->promise.future();
}

} // namespace orv
