#include "platform/config/FileText.h"
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
    auto outcome = read_file_text(path, request.size_limit);
    if (auto* const text = std::get_if<std::string>(&outcome)) {
        FetchedResponse response;
        response.parts.push_back(std::move(*text));
        return response;
    }
    return FetchFailure{std::holds_alternative<FileAbsent>(outcome) ? ERROR_FILE_NOT_FOUND
                                                                    : ERROR_ACCESS_DENIED};
}

} // namespace norvane
