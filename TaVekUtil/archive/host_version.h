#pragma once

#include <string>

/// The host software's executable below its installation directory. It is appended as it stands, whether the
/// directory ends in a separator or not.
inline constexpr const char* hostExecutable = "\\bin\\win64\\TaQor.exe";

/// The file version of the host executable in the installation directory `path`, four decimal fields joined
/// by dots ("6.1.2.57"). Raises Ta::Exception -999 "TaQor version could not be established" when the
/// executable is missing or has no version information.
std::string TaVekUtils_GetHostVersion(std::string path);
