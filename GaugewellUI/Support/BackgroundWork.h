#pragma once

#include <QFuture>
#include <QPromise>
#include <functional>
#include <memory>
#include <thread>
#include <type_traits>

namespace gaugewell {

// Runs blocking work (child processes, HTTP, the secret store) on a thread of its own and
// yields its result as a future, to be continued on the main thread with `then(context, ...)`.
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

} // namespace gaugewell
