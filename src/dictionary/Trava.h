#pragma once

#include <filesystem>

namespace wkd {

/// Lock file held by one process at a time. The system releases it when the process ends, however it ends; the
/// file itself goes with the object.
class TTrava {
  public:
    /// Throws TErroPacote when another process holds the lock, or when the name is a link, no ordinary file or
    /// somebody else's.
    explicit TTrava(std::filesystem::path arquivo);
    ~TTrava();
    TTrava(const TTrava&) = delete;
    TTrava& operator=(const TTrava&) = delete;

  private:
    std::filesystem::path arquivo_;
#ifdef _WIN32
    void* aberta_ = nullptr;
#else
    int aberta_ = -1;
#endif
};

}  // namespace wkd
