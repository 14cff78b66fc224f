#include "EvidenceArchive.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <new>
#include <sys/stat.h>
#include <zip.h>

namespace norvane {
namespace {

constexpr std::uint32_t compression_level = 6;
// The first day that the archive knows, as a date of DOS.
constexpr std::uint16_t first_day = 1U << 5U | 1U;
constexpr std::uint32_t plain_file = S_IFREG | S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
constexpr unsigned mode_shift = 16; ///< Where the attributes have the mode of a file.

struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
    void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using Archive = std::unique_ptr<zip_t, Discard>;
using MemberFile = std::unique_ptr<zip_file_t, Discard>;

class ZipError {
  public:
    ZipError() { zip_error_init(&error_); }
    ZipError(const ZipError&) = delete;
    ZipError& operator=(const ZipError&) = delete;
    ~ZipError() { zip_error_fini(&error_); }

    [[nodiscard]] zip_error_t* get() { return &error_; }
    [[nodiscard]] std::string text() { return text_of(error_); }

    /// The library's words. Throws std::bad_alloc if that is what failed.
    static std::string text_of(zip_error_t& error) {
        if (zip_error_code_zip(&error) == ZIP_ER_MEMORY) {
            throw std::bad_alloc();
        }
        return zip_error_strerror(&error);
    }

  private:
    zip_error_t error_{};
};

bool is_object_name(std::string_view name) {
    constexpr std::string_view folder = "objects/";
    constexpr std::size_t digits = 64;
    constexpr std::size_t length = folder.size() + digits + 4;
    return name.size() == length && name.starts_with(folder) &&
           (name.ends_with(".cer") || name.ends_with(".crl")) &&
           name.substr(folder.size(), digits).find_first_not_of("0123456789abcdef") == name.npos;
}

/// What a member of this name may hold; 0 if there is no such name.
std::size_t limit_of(std::string_view name) {
    if (name == manifest_name) {
        return max_manifest_octets;
    }
    if (name == verdicts_name || name == records_name) {
        return max_text_octets;
    }
    return is_object_name(name) ? max_object_octets : 0;
}

/// A name of an archive, fit to be told.
std::string shown(std::string_view name) {
    constexpr std::size_t max_shown = 100;
    return "\"" + std::string(name.substr(0, max_shown)) + "\"";
}

class Reader {
  public:
    explicit Reader(Archive archive) : archive_(std::move(archive)) {}

    Members read() {
        const zip_int64_t count = zip_get_num_entries(archive_.get(), 0);
        if (count < 0 || static_cast<std::size_t>(count) > max_archive_members) {
            throw BadEvidence("the archive has more than " + std::to_string(max_archive_members) +
                              " members");
        }
        for (zip_uint64_t index = 0; index < static_cast<zip_uint64_t>(count); ++index) {
            read_member(index);
        }
        return std::move(members_);
    }

  private:
    [[noreturn]] void refuse(const std::string& name, const std::string& reason) {
        throw BadEvidence("member " + shown(name) + " " + reason);
    }

    void read_member(zip_uint64_t index) {
        zip_stat_t stat{};
        if (zip_stat_index(archive_.get(), index, ZIP_FL_ENC_RAW, &stat) != 0) {
            throw BadEvidence("a member cannot be read: " + fault());
        }
        const std::string name = stat.name == nullptr ? "" : stat.name;
        if (limit_of(name) == 0) {
            refuse(name, "has a name that no evidence has");
        }
        if (stat.encryption_method != ZIP_EM_NONE) {
            refuse(name, "is encrypted");
        }
        if (stat.comp_method != ZIP_CM_STORE && stat.comp_method != ZIP_CM_DEFLATE) {
            refuse(name, "is compressed in a way that no evidence is");
        }
        require_plain_file(index, name);
        members_[name] = unpack(index, name);
    }

    void require_plain_file(zip_uint64_t index, const std::string& name) {
        zip_uint8_t system = 0;
        zip_uint32_t attributes = 0;
        if (zip_file_get_external_attributes(archive_.get(), index, 0, &system, &attributes) != 0) {
            refuse(name, "has no attributes");
        }
        if (system != ZIP_OPSYS_UNIX || !S_ISREG(attributes >> mode_shift)) {
            refuse(name, "is no plain file");
        }
    }

    /// Counts what comes out, whatever the archive says of it.
    std::string unpack(zip_uint64_t index, const std::string& name) {
        const MemberFile file(zip_fopen_index(archive_.get(), index, 0));
        if (file == nullptr) {
            refuse(name, "cannot be unpacked: " + fault());
        }
        std::string content;
        std::array<char, 65'536> block{};
        while (const zip_int64_t count = zip_fread(file.get(), block.data(), block.size())) {
            if (count < 0) {
                refuse(name,
                       "cannot be unpacked: " + ZipError::text_of(*zip_file_get_error(file.get())));
            }
            const auto octets = static_cast<std::size_t>(count);
            total_ += octets;
            if (content.size() + octets > limit_of(name)) {
                refuse(name, "is larger than " + std::to_string(limit_of(name)) + " octets");
            }
            if (total_ > max_archive_octets) {
                throw BadEvidence("the members are larger than " +
                                  std::to_string(max_archive_octets) + " octets together");
            }
            content.append(block.data(), octets);
        }
        return content;
    }

    std::string fault() { return ZipError::text_of(*zip_get_error(archive_.get())); }

    Archive archive_;
    Members members_;
    std::size_t total_ = 0;
};

/// What the reader would not take is not written.
void require_readable(const Members& members) {
    std::size_t total = 0;
    for (const auto& [name, content] : members) {
        total += content.size();
        if (content.size() > limit_of(name) || total > max_archive_octets) {
            throw EvidenceNotWritten("the evidence is too large");
        }
    }
    if (members.size() > max_archive_members) {
        throw EvidenceNotWritten("the evidence has too many objects");
    }
}

void add_member(zip_t* archive, const std::string& name, const std::string& content) {
    const auto require = [archive](bool done) {
        if (!done) {
            throw EvidenceNotWritten(ZipError::text_of(*zip_get_error(archive)));
        }
    };
    zip_source_t* const source = zip_source_buffer(archive, content.data(), content.size(), 0);
    require(source != nullptr);
    const zip_int64_t added = zip_file_add(archive, name.c_str(), source, ZIP_FL_ENC_GUESS);
    if (added < 0) {
        zip_source_free(source);
        require(false);
    }
    const auto index = static_cast<zip_uint64_t>(added);
    require(zip_set_file_compression(archive, index, ZIP_CM_DEFLATE, compression_level) == 0);
    require(zip_file_set_dostime(archive, index, 0, first_day, 0) == 0);
    require(zip_file_set_external_attributes(archive, index, 0, ZIP_OPSYS_UNIX,
                                             plain_file << mode_shift) == 0);
}

/// A device or a pipe is not to be replaced by a file.
void require_place(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw EvidenceNotWritten("it is there already, and no regular file");
    }
}

} // namespace

Members read_archive(ByteView file) {
    ZipError error;
    zip_source_t* const source = zip_source_buffer_create(file.data, file.length, 0, error.get());
    if (source == nullptr) {
        throw BadEvidence(error.text());
    }
    // The check for consistency also finds names that are there twice.
    Archive archive(zip_open_from_source(source, ZIP_RDONLY | ZIP_CHECKCONS, error.get()));
    if (archive == nullptr) {
        zip_source_free(source);
        throw BadEvidence("it is no whole archive: " + error.text());
    }
    return Reader(std::move(archive)).read();
}

void write_archive(const std::string& path, const Members& members) {
    require_readable(members);
    require_place(path);
    ZipError error;
    int code = 0;
    Archive archive(zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &code));
    if (archive == nullptr) {
        zip_error_init_with_code(error.get(), code);
        throw EvidenceNotWritten(error.text());
    }
    for (const auto& [name, content] : members) {
        add_member(archive.get(), name, content);
    }
    // The library writes a file beside the path, and gives it that name when it is whole.
    if (zip_close(archive.get()) != 0) {
        throw EvidenceNotWritten(ZipError::text_of(*zip_get_error(archive.get())));
    }
    static_cast<void>(archive.release());
}

} // namespace norvane
