#pragma once

#include "platform/os/os.h"

/// Reader of the version resource of Windows executables, for systems without the version functions of
/// Windows.
namespace os::pe {

/// Reads `dwFileVersionMS` and `dwFileVersionLS` of the VS_FIXEDFILEINFO record in the version resource (type
/// 16, name 1) of the PE32 or PE32+ image in `file`, following the PE/COFF format. Of several languages the
/// choice is that of the system's functions on an English system: neutral, US English, else the first.
///
/// Every offset and count in the file is taken as hostile: the reader touches nothing outside the file and
/// does a bounded number of bounded reads. False when there is no such record; `version` is then untouched.
bool readFileVersion(const InputFile& file, FileVersion& version);

}  // namespace os::pe
