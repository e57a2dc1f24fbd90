#pragma once

/// The single-library mode: stores the library `libraryPath` in the archive `archivePath` with a script entry
/// for the controllers that its extension stands for ("zext": sensors of linux_arm7; "so": linux_arm64 and
/// ombix; others: none listed), and saves the archive over the input file.
///
/// Answers 0, or 1 after reporting a Ta::Exception on standard error.
int injectLibToArchiveFile(const char* libraryPath, const char* archivePath);
