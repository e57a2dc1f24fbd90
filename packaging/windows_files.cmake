# Windows has no GNU tar; the project's own takes its place beside the program.
if(TARGET tavek_tar)
  install(PROGRAMS $<TARGET_FILE:tavek_tar> DESTINATION ${home}/bin RENAME tar.exe)
else()
  message(WARNING "Without the target tavek_tar the Windows package has no tar.exe and cannot unpack tar files.")
endif()
