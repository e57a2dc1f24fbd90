# tar.exe beside the program is the system's GNU tar, by the name the program asks for.
find_program(GNU_TAR NAMES gtar tar REQUIRED)
# make_link(TARGET PATH): installs PATH as a symbolic link to TARGET, also into packages.
function(make_link target path)
  cmake_path(GET path FILENAME name)
  cmake_path(GET path PARENT_PATH directory)
  set(links ${CMAKE_CURRENT_BINARY_DIR}/links/${directory})
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ${target} ${links}/${name} SYMBOLIC)
  install(FILES ${links}/${name} DESTINATION ${directory})
endfunction()

make_link(${GNU_TAR} ${home}/bin/tar.exe)
foreach(program ${programs})
  make_link(../${home}/bin/${program} bin/${program})
endforeach()

foreach(program ${programs})
  set(completion ${CMAKE_CURRENT_LIST_DIR}/completions/${program})
  install(FILES ${completion}.bash DESTINATION share/bash-completion/completions RENAME ${program})
  install(FILES ${completion}.zsh DESTINATION share/zsh/vendor-completions RENAME _${program})
endforeach()

# The names under which Debian looks for the license and the changes.
install(FILES ${source}/LICENSE DESTINATION ${documents} RENAME copyright)
find_program(GZIP NAMES gzip REQUIRED)
execute_process(COMMAND ${GZIP} -9nc ${source}/CHANGELOG.md
  OUTPUT_FILE ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz DESTINATION ${documents})

# The manual pages are made from the documents; without Python they are left out.
find_package(Python3 COMPONENTS Interpreter)
if(Python3_FOUND)
  set(pages ${CMAKE_CURRENT_BINARY_DIR}/man)
  add_custom_target(manual_pages ALL
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${pages}
    COMMAND Python3::Interpreter -B ${source}/scripts/manual_pages.py
      --version ${PROJECT_VERSION} --output ${pages} --compress
    COMMENT "Making the manual pages" VERBATIM)
  install(DIRECTORY ${pages}/ DESTINATION share/man)
else()
  message(WARNING "Without Python 3 no manual pages are made or installed.")
endif()
