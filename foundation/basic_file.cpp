#include "foundation/basic_file.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "foundation/exceptions.hpp"
#include "foundation/fatal.hpp"
#include "foundation/strings.hpp"
#include "shell/console.hpp"

namespace znp {

namespace {

constexpr mode_t directory_mode = 0775;
constexpr const wchar_t* check_file_name = L"pathcheck.zsf";

void print_reattempt() {
    Console::println("Re-attempting...");
    Console::set_color('w');
    Console::wait_for_retry();
}

void print_failed_path(const char* title, const std::wstring& path) {
    Console::println(title, 'R');
    Console::println(path);
}

std::FILE* open_stream(const std::wstring& path, const char* mode, const char* failure_title, bool retry) {
    const std::string narrow_path = w_to_a_direct(path);
    for (;;) {
        if (std::FILE* handle = std::fopen(narrow_path.c_str(), mode)) return handle;
        const int error_number = errno;
        if (!retry) fire(FileException(error_number, failure_title, path));
        print_failed_path(failure_title, path);
        errno = error_number;  // the output may have changed it
        print_errno();
        Console::print_newline();
        print_reattempt();
    }
}

}  // namespace

BasicFile::BasicFile(BasicFile&& other) noexcept
    : path_(std::exchange(other.path_, {})), handle_(std::exchange(other.handle_, nullptr)) {}

BasicFile& BasicFile::operator=(BasicFile&& other) noexcept {
    if (this != &other) {
        close();
        path_ = std::exchange(other.path_, {});
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

BasicFile::~BasicFile() {
    close();
}

void BasicFile::open(const std::wstring& path, bool retry) {
    close();
    handle_ = open_stream(path, "rb", "Unable to open file.", retry);
    path_ = path;
}

void BasicFile::create(const std::wstring& path, bool retry) {
    close();
    handle_ = open_stream(path, "wb+", "Unable to create file.", retry);
    path_ = path;
}

void BasicFile::close() {
    if (try_close()) return;
    Console::set_color('R');
    fatal_exit(unable_to_close_text);
}

bool BasicFile::try_close() {
    if (path_.empty()) return true;
    path_.clear();
    return std::fclose(std::exchange(handle_, nullptr)) == 0;
}

void BasicFile::delete_and_close() {
    if (path_.empty()) return;
    std::fclose(std::exchange(handle_, nullptr));  // what could not be written is not wanted any more
    delete_file(std::exchange(path_, {}));
}

upL_t BasicFile::read(void* buffer, upL_t bytes) {
    return std::fread(buffer, 1, bytes, handle_);
}

upL_t BasicFile::write(const void* buffer, upL_t bytes) {
    return std::fwrite(buffer, 1, bytes, handle_);
}

void BasicFile::seek(ufL_t position) {
    static_assert(sizeof(off_t) == sizeof(ufL_t));
    if (::fseeko(handle_, static_cast<off_t>(position), SEEK_SET) != 0) {
        print_errno();
        fatal_exit("Unable to move file pointer.");
    }
}

bool file_exists(const std::wstring& path) {
    std::FILE* handle = std::fopen(w_to_a_direct(path).c_str(), "rb");
    if (handle == nullptr) return false;
    std::fclose(handle);
    return true;
}

void delete_file(const std::wstring& path) {
    std::remove(w_to_a_direct(path).c_str());
}

void make_directory(const std::wstring& path) {
    ::mkdir(w_to_a_direct(path).c_str(), directory_mode);
}

void rename_file(const std::wstring& from, const std::wstring& to) {
    const std::string narrow_from = w_to_a_direct(from);
    const std::string narrow_to = w_to_a_direct(to);
    while (std::rename(narrow_from.c_str(), narrow_to.c_str()) != 0) {
        print_failed_path("Unable to rename file.", to);
        print_reattempt();
    }
}

std::wstring join_path(const std::wstring& folder, const std::wstring& name) {
    const bool separated = folder.empty() || folder.back() == L'/' || folder.back() == L'\\';
    return folder + (separated ? L"" : L"/") + name;
}

int path_is_writable(const std::wstring& path) {
    try {
        BasicFile file;
        file.create(join_path(path, check_file_name), false);
        file.delete_and_close();
    } catch (const FileException&) {
        return 1;
    }
    return 0;
}

void print_errno() {
    const int error_number = errno;
    Console::print_labelled_line("errno", std::to_string(error_number));
}

}  // namespace znp
