// One deadline at a time. Setting a new one cancels the earlier one, and so does the destructor.
#pragma once

#include <chrono>
#include <memory>
#include <system_error>
#include <utility>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

class Alarm {
  public:
    explicit Alarm(asio::io_context &io) : timer_(io) {}
    ~Alarm() { cancel(); }
    Alarm(const Alarm &) = delete;
    Alarm &operator=(const Alarm &) = delete;

    template <class Action>
    void set(std::chrono::steady_clock::duration delay, Action action) {
        timer_.expires_after(delay);
        // A wait that is over may already be queued. It takes effect only if no later one was set.
        valid_ = std::make_shared<bool>(true);
        timer_.async_wait([valid = std::weak_ptr<bool>(valid_), action = std::move(action)](std::error_code error) {
            if (!error && !valid.expired())
                action();
        });
    }

    void cancel() {
        valid_.reset();
        timer_.cancel();
    }

  private:
    asio::steady_timer timer_;
    std::shared_ptr<bool> valid_;
};
