#pragma once

#include <QFuture>
#include <QFutureWatcher>
#include <QObject>
#include <QPromise>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

namespace gaugewell {

// Runs blocking work (child processes, HTTP, the secret store) on a thread of its own and
// yields its result as a future, to be continued on the main thread with `continueOn`.
// Deliberately not the global thread pool, which has a thread per core and would be starved by
// a five-minute sign-in, and detached, so that quitting never waits for work in flight.
template <class Work> auto runInBackground(Work work) -> QFuture<std::invoke_result_t<Work>> {
    using Result = std::invoke_result_t<Work>;
    auto promise = std::make_shared<QPromise<Result>>();
    QFuture<Result> future = promise->future();
    promise->start();
    std::thread([promise, work = std::move(work)]() mutable {
        if constexpr (std::is_void_v<Result>) {
            work();
        } else {
            promise->addResult(work());
        }
        promise->finish();
    }).detach();
    return future;
}

namespace detail {

template <class T> struct FutureOf {
    static constexpr bool isFuture = false;
    using Value = T;
};
template <class T> struct FutureOf<QFuture<T>> {
    static constexpr bool isFuture = true;
    using Value = T;
};

template <class T, class Work> decltype(auto) callWithResult(Work& work, const QFuture<T>& future) {
    if constexpr (std::is_void_v<T>) {
        return work();
    } else {
        return work(future.result());
    }
}

} // namespace detail

// Continues `future` with `work(result)` on `context`'s thread, unless `context` has gone by then.
// Qt 6.4's own `then(context, ...)` asserts when the context dies first, which a quit during a
// refresh does; here the continuation is a child of the context and dies with it. When `work`
// returns a future, the result waits for that one too. The returned future is cancelled when the
// context went away first (or `future` was cancelled).
template <class T, class Work> auto continueOn(QObject* context, QFuture<T> future, Work work) {
    using Returned = std::decay_t<decltype(detail::callWithResult(work, future))>;
    using Result = typename detail::FutureOf<Returned>::Value;
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QFuture<Result> result = promise->future();
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, watcher,
                     [watcher, context, promise, work = std::move(work)]() mutable {
                         watcher->deleteLater();
                         const QFuture<T> finished = watcher->future();
                         if (finished.isCanceled()) {
                             return; // the promise cancels when its last owner lets go
                         }
                         if constexpr (detail::FutureOf<Returned>::isFuture) {
                             continueOn(context, detail::callWithResult(work, finished),
                                        [promise](const auto&... value) {
                                            if constexpr (sizeof...(value) > 0) {
                                                promise->addResult(value...);
                                            }
                                            promise->finish();
                                        });
                         } else if constexpr (std::is_void_v<Result>) {
                             detail::callWithResult(work, finished);
                             promise->finish();
                         } else {
                             promise->addResult(detail::callWithResult(work, finished));
                             promise->finish();
                         }
                     });
    watcher->setFuture(future);
    return result;
}

} // namespace gaugewell
