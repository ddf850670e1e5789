# Run at installation, when the prefix is known: "cmake --install" and packages choose it late.
set(TOVEL_BINDIR ${CMAKE_INSTALL_PREFIX}/bin)
set(applications ${CMAKE_INSTALL_PREFIX}/share/applications)
set(services ${CMAKE_INSTALL_PREFIX}/share/dbus-1/services)
# Sessions look for what starts with them in /etc, where a package also keeps what it configures.
set(autostart ${CMAKE_INSTALL_PREFIX}/etc/xdg/autostart)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(autostart /etc/xdg/autostart)
endif()

foreach(file ${applications}/org.tovel.Tovel.desktop ${applications}/org.tovel.tovelctl.desktop
        ${services}/org.tovel.Tovel.service ${autostart}/org.tovel.Tovel.desktop)
    cmake_path(GET file FILENAME name)
    cmake_path(GET file PARENT_PATH folder)
    cmake_path(GET folder FILENAME folder)
    message(STATUS "Installing: $ENV{DESTDIR}${file}")
    configure_file(${CMAKE_CURRENT_LIST_DIR}/session/${folder}/${name}.in $ENV{DESTDIR}${file} @ONLY
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
    list(APPEND CMAKE_INSTALL_MANIFEST_FILES ${file})
endforeach()
