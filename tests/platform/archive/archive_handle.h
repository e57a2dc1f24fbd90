#pragma once

#include "platform/archive/archive.h"
#include "platform/base/exception.h"

/// A new container for the time of a test.
class ArchiveHandle {
  public:
    ArchiveHandle() { Ta::Check(zArchive_Construct(&handle_, nullptr), "ArchiveHandle"); }
    ~ArchiveHandle() { static_cast<void>(zObject_Destroy(handle_)); }
    ArchiveHandle(const ArchiveHandle&) = delete;
    ArchiveHandle& operator=(const ArchiveHandle&) = delete;

    zHandle get() const { return handle_; }

  private:
    zHandle handle_ = nullptr;
};
