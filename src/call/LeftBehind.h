#pragma once

#include <norvane/wincrypt.h>

#include <vector>

namespace norvane {

/// References to contexts and stores of the platform that are released together at the end.
class LeftBehind {
  public:
    LeftBehind() = default;
    LeftBehind(const LeftBehind&) = delete;
    LeftBehind& operator=(const LeftBehind&) = delete;
    ~LeftBehind();

    // Each takes the reference over. Throw std::bad_alloc, with the reference released.
    void take(PCCERT_CONTEXT context);
    void take(HCERTSTORE store);

  private:
    std::vector<PCCERT_CONTEXT> contexts_;
    std::vector<HCERTSTORE> stores_;
};

} // namespace norvane
