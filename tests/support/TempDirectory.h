#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

/// A fresh directory under the system's temporary directory, removed with its content when the test ends.
class TempDirectory {
public:
    TempDirectory() {
        std::random_device random;
        do {
            _path = std::filesystem::temp_directory_path() /
                    ("meridon-filesystem-test-" + std::to_string(random()) + std::to_string(random()));
        } while (!std::filesystem::create_directory(_path));
    }
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TempDirectory(TempDirectory const&) = delete;
    TempDirectory& operator=(TempDirectory const&) = delete;

    std::filesystem::path const& Path() const { return _path; }
    std::string File(std::string const& name) const { return (_path / name).string(); }

private:
    std::filesystem::path _path;
};

inline void WriteFile(std::string const& path, std::string const& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
}

inline std::string ReadFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline size_t CountOccurrences(std::string const& text, std::string const& part) {
    size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}
