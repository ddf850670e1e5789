# tovel_wayland_protocols(NAME XML…): a static library of what wayland-scanner makes of protocols, for
# clients. What is generated is none of our code: it has no part in our warnings.
pkg_check_modules(WAYLAND_CLIENT REQUIRED IMPORTED_TARGET wayland-client)
pkg_get_variable(WAYLAND_PROTOCOLS_DIR wayland-protocols pkgdatadir)
find_package(PlasmaWaylandProtocols REQUIRED)
find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)

function(tovel_wayland_protocols name)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
    file(MAKE_DIRECTORY ${folder})
    set(generated)
    foreach(xml IN LISTS ARGN)
        cmake_path(GET xml STEM protocol)
        set(header ${folder}/${protocol}-client.h)
        set(code ${folder}/${protocol}.c)
        add_custom_command(OUTPUT ${header} COMMAND ${WAYLAND_SCANNER} client-header ${xml} ${header}
            DEPENDS ${xml} VERBATIM)
        add_custom_command(OUTPUT ${code} COMMAND ${WAYLAND_SCANNER} private-code ${xml} ${code}
            DEPENDS ${xml} VERBATIM)
        list(APPEND generated ${header} ${code})
    endforeach()
    add_library(${name} STATIC ${generated})
    set_target_properties(${name} PROPERTIES AUTOMOC OFF POSITION_INDEPENDENT_CODE ON)
    target_include_directories(${name} SYSTEM INTERFACE ${folder})
    target_link_libraries(${name} PUBLIC PkgConfig::WAYLAND_CLIENT)
endfunction()
