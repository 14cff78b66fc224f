#pragma once

#include <unistd.h>

namespace norvane {

/// Closes an open file at the end of a scope. Negative: there is none.
class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    [[nodiscard]] int number() const noexcept { return number_; }

  private:
    int number_;
};

} // namespace norvane
