// Plain files, and the few file system operations that the system uses.
#pragma once

#include <cstdio>
#include <string>

#include "foundation/types.hpp"

namespace znp {

// A plain file. An empty path means closed. Moved, never copied.
class BasicFile {
  public:
    BasicFile() = default;
    BasicFile(BasicFile&& other) noexcept;
    BasicFile& operator=(BasicFile&& other) noexcept;
    BasicFile(const BasicFile&) = delete;
    BasicFile& operator=(const BasicFile&) = delete;
    ~BasicFile();

    // "rb" and "wb+". With retry, prints what failed and waits for ENTER, until it works; without, throws a
    // FileException.
    void open(const std::wstring& path, bool retry);
    void create(const std::wstring& path, bool retry);

    void close();  // a failure is fatal
    // The same with the failure, which errno tells, as the result; the file is closed either way.
    [[nodiscard]] bool try_close();
    void delete_and_close();
    upL_t read(void* buffer, upL_t bytes);
    upL_t write(const void* buffer, upL_t bytes);
    void seek(ufL_t position);

    bool is_open() const { return !path_.empty(); }
    const std::wstring& path() const { return path_; }

  private:
    std::wstring path_;
    std::FILE* handle_ = nullptr;
};

bool file_exists(const std::wstring& path);
void delete_file(const std::wstring& path);
void make_directory(const std::wstring& path);
void rename_file(const std::wstring& from, const std::wstring& to);  // retries with the user
std::wstring join_path(const std::wstring& folder, const std::wstring& name);

inline constexpr const char* unable_to_close_text = "Unable to close file.";
inline constexpr const char* unable_to_write_text = "Unable to write to path.";
int path_is_writable(const std::wstring& path);  // 0: yes; 1: no

void print_errno();

}  // namespace znp
