// The runs that a sweep makes fail at each point.
#pragma once

#include "support/HttpServer.h"
#include "support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace norvane::testing {

// A run whose right answer is "revoked".
struct Scenario {
    std::string name;
    std::string program;
    std::vector<std::string> arguments;
    // The program arms the fault itself, by its first arguments; else its environment does.
    bool arms_itself = false;
    // A folder that each run gets anew and empty, as --cache-dir.
    bool wants_cache_folder = false;
};

// The files and the server that the scenarios need. Keys are new in each process; the allocations
// of a run do not hang on them.
class Scenarios {
  public:
    Scenarios();

    [[nodiscard]] const std::vector<Scenario>& all() const { return all_; }
    [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }

  private:
    TemporaryFolder folder_;
    HttpServer server_;
    std::vector<Scenario> all_;
};

} // namespace norvane::testing
