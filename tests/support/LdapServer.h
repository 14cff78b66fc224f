// OpenLDAP's server on loopback, with entries of a test.
#pragma once

#include "support/Der.h"
#include "support/TemporaryFolder.h"

#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norvane::testing {

// One entry below "o=Test". The distinguished name is relative to it: "cn=A". The values stand
// under names such as "certificateRevocationList;binary".
struct LdapEntry {
    std::string name;
    std::vector<std::string> classes;
    std::map<std::string, std::vector<Bytes>> attributes;
};

// Everybody may read all of it without a bind. Serves 127.0.0.1 from the end of the constructor on.
class LdapServer {
  public:
    [[nodiscard]] static bool is_installed();

    explicit LdapServer(const std::vector<LdapEntry>& entries);
    LdapServer(const LdapServer&) = delete;
    LdapServer& operator=(const LdapServer&) = delete;
    ~LdapServer();

    // "ldap://127.0.0.1:PORT/" and the rest.
    [[nodiscard]] std::string url(const std::string& rest) const;

  private:
    TemporaryFolder folder_;
    int port_ = 0;
    pid_t process_ = -1;
};

} // namespace norvane::testing
