#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace gaugewell::testing {

// A private directory under the temporary folder, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "gaugewell-test.XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("mkdtemp failed");
        }
        root = pattern;
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }

    const std::filesystem::path& path() const { return root; }
    std::filesystem::path operator/(const std::filesystem::path& relative) const { return root / relative; }

private:
    std::filesystem::path root;
};

inline void writeFile(const std::filesystem::path& path, const std::string& contents,
                      std::filesystem::perms permissions = std::filesystem::perms(0644)) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << contents;
    std::filesystem::permissions(path, permissions);
}

// A /bin/sh script with the given body, executable by its owner.
inline void writeScript(const std::filesystem::path& path, const std::string& body) {
    writeFile(path, "#!/bin/sh\n" + body + "\n", std::filesystem::perms(0755));
}

} // namespace gaugewell::testing
