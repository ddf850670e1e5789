# Options that every target of the project shares.
add_library(tovel_options INTERFACE)
target_include_directories(tovel_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_definitions(tovel_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH
    QT_STRICT_ITERATORS TOVEL_VERSION="${PROJECT_VERSION}")
target_compile_options(tovel_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    # Records initialise their fields themselves; naming a few of them is the idiom here.
    -Wno-missing-field-initializers
    # GCC 12 sees empty optionals read where they are not.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
if(TOVEL_WERROR)
    target_compile_options(tovel_options INTERFACE -Werror)
endif()
if(TOVEL_SANITIZE)
    target_compile_options(tovel_options INTERFACE
        -fsanitize=${TOVEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tovel_options INTERFACE -fsanitize=${TOVEL_SANITIZE})
endif()
if(TOVEL_COVERAGE)
    target_compile_options(tovel_options INTERFACE --coverage)
    target_link_options(tovel_options INTERFACE --coverage)
endif()
# Every room may become part of a shared library; some builds of Qt ask for this themselves.
target_compile_options(tovel_options INTERFACE -fPIC)

# tovel_room(NAME SOURCES… DEPENDS …): one static library per room, which states what it leans on.
function(tovel_room name)
    cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ROOM_SOURCES})
    target_link_libraries(${name} PUBLIC tovel_options ${ROOM_DEPENDS} PRIVATE ${ROOM_PRIVATE_DEPENDS})
endfunction()

# tovel_program(NAME SOURCES… DEPENDS …): an executable whose contents are in a library of its own
# (app/program.h), of which it sees one function.
function(tovel_program name)
    cmake_parse_arguments(PROGRAM "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${name}_contents SHARED ${PROGRAM_SOURCES})
    target_link_libraries(${name}_contents PRIVATE tovel_options ${PROGRAM_DEPENDS})
    target_link_options(${name}_contents PRIVATE -Wl,--exclude-libs,ALL -Wl,-Bsymbolic)
    set_target_properties(${name}_contents PROPERTIES
        OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/tovel/programs
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    add_executable(${name} ${CMAKE_SOURCE_DIR}/src/app/program.cpp)
    target_link_libraries(${name} PRIVATE tovel_options ${name}_contents)
    # Beside the programs' folder in the build tree as where it is installed.
    set_target_properties(${name} PROPERTIES
        AUTOMOC OFF BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "$ORIGIN/../lib/tovel/programs")
    install(TARGETS ${name} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(TARGETS ${name}_contents LIBRARY DESTINATION lib/tovel/programs)
endfunction()
