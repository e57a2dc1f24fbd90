#pragma once

#include <stdexcept>

namespace tar {

/// Why an archive is not unpacked, as a sentence for the user ("member a/b: damaged header").
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace tar
