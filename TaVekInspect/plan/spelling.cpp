#include "TaVekInspect/plan/spelling.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

std::string spellingOf(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    std::error_code error;
    const fs::path whole = fs::absolute(std::u8string(path.begin(), path.end()), error);
    fs::path spelling = fs::weakly_canonical(whole, error);
    if (error) spelling = whole.lexically_normal();
    if (!spelling.has_filename()) spelling = spelling.parent_path();  // it ends in a separator
    const std::u8string text = spelling.generic_u8string();
    return {text.begin(), text.end()};
}
