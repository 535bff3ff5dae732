# The compile settings of all targets, and the two kinds of target: rooms (libraries) and test programs.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(TOLV_SANITIZE "address and undefined-behaviour sanitizers" OFF)
option(TOLV_COVERAGE "count which lines the tests run, for gcovr" OFF)
option(TOLV_TOGETHER "compile several sources of a room or of a test program as one" ON)

find_program(TOLV_CCACHE ccache)
if(TOLV_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${TOLV_CCACHE})
endif()

# No path of the building machine gets into the program, so two builds of one commit are equal. With a compiler cache,
# sources are named relative to the build folder; CMake names them from the root of the file system.
cmake_path(RELATIVE_PATH CMAKE_SOURCE_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE sourcesFromBuild)
add_library(tolv_options INTERFACE)
target_compile_options(tolv_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${sourcesFromBuild}/=)
target_include_directories(tolv_options INTERFACE ${CMAKE_SOURCE_DIR})
if(TOLV_SANITIZE)
    target_compile_options(tolv_options INTERFACE -fsanitize=address -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS)
    target_link_options(tolv_options INTERFACE -fsanitize=address,undefined)
endif()
if(TOLV_COVERAGE)
    target_compile_options(tolv_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(tolv_options INTERFACE --coverage)
endif()
if(WIN32)
    # Each function gets a section of its own, so that the linker can leave out functions that a program does not use.
    target_compile_options(tolv_options INTERFACE -fstack-protector-strong -ffunction-sections -fdata-sections)
    target_link_options(tolv_options INTERFACE -fstack-protector-strong)
    target_compile_definitions(tolv_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# Sets `variable` to sources that each include several of these. Most of the compile time goes into the headers of the
# standard library, of Windows and of the test framework, which are then read once for many sources. The paths are
# relative to the project's root, so that a compiler cache finds them in every clone; CMake's own way to do this writes
# absolute paths. The tidy check compiles each source alone, so no source may depend on what its neighbour includes.
function(tolv_together variable name)
    set(together)
    while(ARGN)
        list(LENGTH together number)
        set(includes)
        foreach(i RANGE 7)
            if(ARGN)
                list(POP_FRONT ARGN source)
                cmake_path(ABSOLUTE_PATH source NORMALIZE)
                cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${CMAKE_SOURCE_DIR})
                string(APPEND includes "#include \"${source}\"\n")
            endif()
        endforeach()
        set(file ${CMAKE_CURRENT_BINARY_DIR}/${name}_${number}.cpp)
        file(CONFIGURE OUTPUT ${file} CONTENT "${includes}" @ONLY)
        list(APPEND together ${file})
    endwhile()
    set(${variable} ${together} PARENT_SCOPE)
endfunction()

# tolv_room(NAME [TOGETHER] [SOURCES file...] [USES room...]): the library of one room, named after its folder
# ("ado/embedded" is ado_embedded). Without sources it is a room of headers only. TOGETHER is for rooms that a program
# needs as a whole. From other rooms a linker takes only the objects that are used, which keeps the Windows tool below 1
# MB.
function(tolv_room name)
    cmake_parse_arguments(ROOM "TOGETHER" "" "SOURCES;USES" ${ARGN})
    if(ROOM_SOURCES)
        if(TOLV_TOGETHER AND (ROOM_TOGETHER OR TOLV_SANITIZE))
            tolv_together(ROOM_SOURCES ${name} ${ROOM_SOURCES})
        endif()
        add_library(${name} STATIC ${ROOM_SOURCES})
        target_link_libraries(${name} PUBLIC tolv_options ${ROOM_USES})
        if(TOLV_SANITIZE)
            # Without the checks of each pointer before its use: they take up to a quarter of the compile time, the
            # address sanitizer sees null pointers, and no code here casts bytes to wider types.
            target_compile_options(${name} PRIVATE -fsanitize=undefined -fno-sanitize=null,alignment
                -fno-sanitize-recover=all)
        endif()
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE tolv_options ${ROOM_USES})
    endif()
endfunction()

# tolv_program(NAME DESCRIPTION text): adds the icon, the version block and, for a Windows program, the manifest from
# NAME.manifest.in in the program's own folder; sets the output folder, and the link options for shipping.
function(tolv_program name)
    cmake_parse_arguments(PROGRAM "" "DESCRIPTION" "" ${ARGN})
    if(TOLV_BIN)
        set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${TOLV_BIN})
    endif()
    if(NOT WIN32)
        return()
    endif()
    set(PROGRAM_NAME ${name})
    configure_file(${name}.manifest.in ${name}.manifest @ONLY)
    configure_file(${CMAKE_SOURCE_DIR}/cmake/program.rc.in ${name}.rc @ONLY)
    set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${name}.rc PROPERTIES
        OBJECT_DEPENDS "${CMAKE_SOURCE_DIR}/win32/tool.ico;${CMAKE_CURRENT_BINARY_DIR}/${name}.manifest")
    target_sources(${name} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${name}.rc)
    # Stripped by the linker: a separate strip would write the date into the file.
    target_link_options(${name} PRIVATE -municode $<$<CONFIG:Release>:-s> -Wl,--gc-sections)
endfunction()

# tolv_fast(ROOM...): optimises rooms for speed that handle many rows and pages. All other code of the Windows programs
# is optimised for size, so that the tool stays below 1 MB.
function(tolv_fast)
    foreach(name ${ARGN})
        if(WIN32)
            target_compile_options(${name} PRIVATE -O2)
        endif()
    endforeach()
endfunction()

# tolv_test(NAME SOURCES file... USES room...): one test program for a room; ctest runs it as one test.
function(tolv_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;USES" ${ARGN})
    if(TOLV_TOGETHER)
        tolv_together(TEST_SOURCES ${name} ${TEST_SOURCES})
    endif()
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE tolv_options ${TEST_USES} GTest::gmock_main)
    if(TOLV_SANITIZE)
        # Optimising the test framework's templates, or checking them for undefined behaviour, too, takes longer than
        # running them as they are.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    add_test(NAME ${name} COMMAND ${name})
endfunction()
