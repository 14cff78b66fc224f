#include "platform/WholeFile.h"
#include "platform/retrieval/Fetch.h"

#include <string_view>

namespace norvane {
namespace {

/// The path of a file on this machine (RFC 8089 2); empty if the URL names none.
std::string path_of(std::string_view url) {
    std::string_view path = url.substr(name_of(UrlScheme::file).size() + 1);
    for (const std::string_view authority : {"//localhost/", "///"}) {
        if (path.starts_with(authority)) {
            path.remove_prefix(authority.size() - 1);
            break;
        }
    }
    return path.starts_with("//") || !path.starts_with('/')
               ? std::string()
               : percent_decoded(path).value_or(std::string());
}

} // namespace

FetchOutcome fetch_file(const FetchRequest& request) {
    const std::string path = path_of(request.url);
    if (path.empty()) {
        return FetchFailure{ERROR_INTERNET_INVALID_URL};
    }
    const auto outcome =
        read_whole_file(path, {.max_size = static_cast<std::size_t>(request.size_limit)});
    if (const auto* const file = std::get_if<WholeFile>(&outcome)) {
        FetchedResponse response;
        response.parts.emplace_back(file->bytes.text());
        return response;
    }
    switch (std::get<FileFault>(outcome).kind) {
    case FileFault::Kind::absent:
        return FetchFailure{ERROR_FILE_NOT_FOUND};
    case FileFault::Kind::too_large:
        return FetchFailure{ERROR_FILE_TOO_LARGE};
    default:
        return FetchFailure{ERROR_ACCESS_DENIED};
    }
}

} // namespace norvane
