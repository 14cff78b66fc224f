#include "platform/retrieval/Fetch.h"
#include "platform/retrieval/WholeFile.h"

#include <cerrno>
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
    auto outcome = read_whole_file(path.c_str(), 0, request.size_limit);
    if (auto* const file = std::get_if<WholeFile>(&outcome)) {
        FetchedResponse response;
        response.parts.push_back(std::move(file->bytes));
        return response;
    }
    switch (std::get<FileRefusal>(outcome).error_number) {
    case ENOENT:
    case ENOTDIR:
        return FetchFailure{ERROR_FILE_NOT_FOUND};
    case EFBIG:
        return FetchFailure{ERROR_FILE_TOO_LARGE};
    default:
        return FetchFailure{ERROR_ACCESS_DENIED};
    }
}

} // namespace norvane
