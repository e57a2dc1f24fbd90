#pragma once

#include <cstddef>
#include <functional>

/// Called before each step of a long work and at its end: how many are done, of how many.
using Progress = std::function<void(std::size_t done, std::size_t count)>;
