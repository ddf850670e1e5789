# Run at installation, when the prefix is known: "cmake --install" and packages choose it late. The
# programs' folder below it is "bin".
set(file ${CMAKE_INSTALL_PREFIX}/share/gnome-shell/extensions/tovel@tovel.org/programs)
set(prefix ${CMAKE_INSTALL_PREFIX})
# The Shell sees where a program is, whatever links lead there.
if("$ENV{DESTDIR}" STREQUAL "")
    file(REAL_PATH ${prefix} prefix)
endif()
cmake_path(ABSOLUTE_PATH bin BASE_DIRECTORY ${prefix})
message(STATUS "Installing: $ENV{DESTDIR}${file}")
file(WRITE $ENV{DESTDIR}${file} "${bin}/tovel\n${bin}/tovelctl\n")
list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${file})
