#pragma once

#include "platform/os/os.h"

/// Reader of the version resource of Windows executables, for systems without the version functions of
/// Windows.
namespace os::pe {

/// Reads `dwFileVersionMS` and `dwFileVersionLS` of the VS_FIXEDFILEINFO record in the first version resource
/// (type 16, RT_VERSION) of the PE32 or PE32+ image in `file`, following the PE/COFF format.
///
/// Every offset and count in the file is taken as hostile: the reader touches nothing outside the file and
/// does a bounded number of bounded reads. False when there is no such record; `version` is then untouched.
bool readFileVersion(const InputFile& file, FileVersion& version);

}  // namespace os::pe
