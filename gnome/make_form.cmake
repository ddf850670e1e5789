# Lays out the extension in one of its forms, as gnome-extensions does:
#   cmake -DFORM=modules|old -DINTO=FOLDER -DMETADATA=FILE -DPROGRAMS=FILE \
#       -P make_form.cmake
# The sources are ES modules. The old form, for GNOME Shell 43 and 44, has the same code behind other
# imports and exports, and an entry point of its own.
function(to_old_style text result)
    set(text "\n${text}")
    string(REGEX REPLACE "\nimport ([A-Za-z]+) from 'gi://([A-Za-z]+)';"
        "\nconst \\1 = imports.gi.\\2;" text "${text}")
    string(REGEX REPLACE
        "\nimport \\* as ([A-Za-z]+) from 'resource:///org/gnome/shell/([a-z]+)/([A-Za-z]+)\\.js';"
        "\nconst \\1 = imports.\\2.\\3;" text "${text}")
    string(REGEX REPLACE "\nimport (\\{[A-Za-z0-9, \n]+\\}) from '\\./([a-z_]+)\\.js';"
        "\nconst \\1 = imports.misc.extensionUtils.getCurrentExtension().imports.\\2;" text "${text}")
    string(REGEX REPLACE "\nexport class ([A-Za-z0-9]+)" "\nvar \\1 = class \\1" text "${text}")
    string(REGEX REPLACE "\nexport const " "\nvar " text "${text}")
    string(REGEX REPLACE "\nexport function " "\nfunction " text "${text}")
    if(text MATCHES "\n(import|export) [^\n]*")
        message(FATAL_ERROR "Nothing in the old style for${CMAKE_MATCH_0}")
    endif()
    set(${result} "'use strict';\n${text}" PARENT_SCOPE)
endfunction()

file(GLOB sources ${CMAKE_CURRENT_LIST_DIR}/extension/*.js)
file(REMOVE_RECURSE ${INTO})
file(MAKE_DIRECTORY ${INTO})
foreach(source IN LISTS sources)
    cmake_path(GET source FILENAME name)
    if(FORM STREQUAL "modules")
        file(COPY ${source} DESTINATION ${INTO})
    elseif(NOT name STREQUAL "extension.js")
        file(READ ${source} text)
        to_old_style("${text}" text)
        file(WRITE ${INTO}/${name} "${text}")
    endif()
endforeach()
if(FORM STREQUAL "old")
    file(COPY ${CMAKE_CURRENT_LIST_DIR}/old/extension.js DESTINATION ${INTO})
endif()
configure_file(${METADATA} ${INTO}/metadata.json COPYONLY)
configure_file(${PROGRAMS} ${INTO}/programs COPYONLY)
file(COPY ${CMAKE_CURRENT_LIST_DIR}/org.tovel.Shell1.xml
    ${CMAKE_CURRENT_LIST_DIR}/extension/tovel-symbolic.svg DESTINATION ${INTO})
