#pragma once

#include "chain/Path.h"

namespace norvane {

/// Takes back what is pushed at the front of a path: on destruction it pops until the element that
/// was first when the guard was made, or when it was told to keep, is first again.
class PathGuard {
  public:
    explicit PathGuard(Chain& path) : items_(path.items), first_(items_.begin()) {}
    PathGuard(const PathGuard&) = delete;
    PathGuard& operator=(const PathGuard&) = delete;
    ~PathGuard() {
        while (items_.begin() != first_) {
            items_.pop_front();
        }
    }

    /// Lets all that stands on the path stay.
    void keep() { first_ = items_.begin(); }

  private:
    Chain::Items& items_;
    Chain::Position first_;
};

} // namespace norvane
