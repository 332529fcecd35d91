// Archives for tests, as the release has them and as an attacker would.
#pragma once

#include <archive.h>
#include <archive_entry.h>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace tarnwick::test {

/// Written to the file when `close` is called.
class MadeArchive {
public:
    explicit MadeArchive(
        const std::filesystem::path& file, int format = ARCHIVE_FORMAT_TAR_PAX_RESTRICTED,
        int filter = ARCHIVE_FILTER_ZSTD, int times = 1)
        : archive_(::archive_write_new()) {
        require(::archive_write_set_format(archive_, format));
        for (int time = 0; time < times; ++time) {
            require(::archive_write_add_filter(archive_, filter));
        }
        require(::archive_write_open_filename(archive_, file.c_str()));
    }

    MadeArchive(const MadeArchive&) = delete;
    MadeArchive& operator=(const MadeArchive&) = delete;

    ~MadeArchive() { ::archive_write_free(archive_); }

    void close() { require(::archive_write_close(archive_)); }

    MadeArchive& folder(const std::string& name) {
        add(name, AE_IFDIR, 0755, "", [](archive_entry*) {});
        return *this;
    }

    MadeArchive& file(const std::string& name, const std::string& content, mode_t mode = 0644) {
        add(name, AE_IFREG, mode, content, [](archive_entry*) {});
        return *this;
    }

    MadeArchive& link(const std::string& name, const std::string& target) {
        add(name, AE_IFLNK, 0777, "",
            [&](archive_entry* entry) { ::archive_entry_set_symlink(entry, target.c_str()); });
        return *this;
    }

    MadeArchive& hardLink(const std::string& name, const std::string& target) {
        add(name, AE_IFREG, 0644, "",
            [&](archive_entry* entry) { ::archive_entry_set_hardlink(entry, target.c_str()); });
        return *this;
    }

    /// A device or a pipe.
    MadeArchive& special(const std::string& name, mode_t type) {
        add(name, type, 0666, "", [](archive_entry* entry) {
            ::archive_entry_set_rdevmajor(entry, 1);
            ::archive_entry_set_rdevminor(entry, 3);
        });
        return *this;
    }

private:
    static void require(int result) {
        if (result != ARCHIVE_OK) {
            throw std::runtime_error("the archive can't be made");
        }
    }

    template<class More>
    void add(const std::string& name, mode_t type, mode_t mode, const std::string& content, More more) {
        archive_entry* const entry = ::archive_entry_new();
        ::archive_entry_set_pathname(entry, name.c_str());
        ::archive_entry_set_filetype(entry, type);
        ::archive_entry_set_perm(entry, mode);
        ::archive_entry_set_size(entry, static_cast<la_int64_t>(content.size()));
        more(entry);
        require(::archive_write_header(archive_, entry));
        ::archive_entry_free(entry);
        if (::archive_write_data(archive_, content.data(), content.size())
            != static_cast<la_ssize_t>(content.size())) {
            throw std::runtime_error("the archive can't be filled");
        }
    }

    archive* archive_;
};

} // namespace tarnwick::test
