#include "support/LdapServer.h"

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <netinet/in.h>
#include <openssl/evp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace norvane::testing {
namespace {

constexpr const char* program = "/usr/sbin/slapd";

// What comes behind "file" in a configuration.
constexpr const char* configuration = R"(
include /etc/ldap/schema/core.schema
modulepath /usr/lib/ldap
moduleload back_mdb
database mdb
suffix "o=Test"
access to * by * read
maxsize 16777216
)";

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int free_port() {
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound =
        bind(probe, generic, length) == 0 && getsockname(probe, generic, &length) == 0;
    close(probe);
    if (!bound)
        throw std::runtime_error("there is no free port");
    return ntohs(address.sin_port);
}

bool accepts(int port) {
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = loopback(port);
    const bool connected =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(probe);
    return connected;
}

std::string base64(const Bytes& bytes) {
    std::string text(4 * (bytes.size() / 3 + 1) + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string ldif(const std::vector<LdapEntry>& entries) {
    std::string text = "dn: o=Test\nobjectClass: organization\no: Test\n\n";
    for (const LdapEntry& entry : entries) {
        text += "dn: " + entry.name + ",o=Test\n";
        for (const std::string& name : entry.classes)
            text += "objectClass: " + name + "\n";
        for (const auto& [name, values] : entry.attributes)
            for (const Bytes& value : values)
                text += name + ":: " + base64(value) + "\n";
        text += "\n";
    }
    return text;
}

pid_t start(const std::vector<std::string>& arguments) {
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        execv(program, pointers.data());
        _exit(127);
    }
    return child;
}

} // namespace

bool LdapServer::is_installed() { return std::filesystem::exists(program); }

LdapServer::LdapServer(const std::vector<LdapEntry>& entries) : port_(free_port()) {
    const std::filesystem::path data = folder_.path() / "data";
    std::filesystem::create_directory(data);
    const std::string file =
        folder_.write("slapd.conf", configuration + ("directory " + data.string() + "\n"));
    const std::string content = folder_.write("content.ldif", ldif(entries));
    int status = -1;
    const pid_t loader = start({program, "-T", "add", "-q", "-f", file, "-l", content});
    if (waitpid(loader, &status, 0) != loader || status != 0)
        throw std::runtime_error("slapd does not take the entries");
    process_ = start({program, "-d", "0", "-f", file, "-h", url("")});
    constexpr std::chrono::seconds patience{20};
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!accepts(port_)) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("slapd does not start");
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
}

LdapServer::~LdapServer() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

std::string LdapServer::url(const std::string& rest) const {
    return "ldap://127.0.0.1:" + std::to_string(port_) + "/" + rest;
}

} // namespace norvane::testing
