// A scratch folder per test, removed afterwards, and small file helpers.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "engine/satrec.h"

namespace veloran::testing {

class ScratchDir {
  public:
    ScratchDir() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "veloran-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~ScratchDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

inline void WriteText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

inline std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline std::string Resource(const std::string& name) {
    return std::string(VELORAN_RESOURCE_DIR) + "/" + name;
}

// A zeroed record on the heap (records are about 20 kB).
inline std::unique_ptr<SatRec> NewSatRec() {
    return std::make_unique<SatRec>();
}

}  // namespace veloran::testing
