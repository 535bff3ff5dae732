# The compile settings of every target, and the two kinds of target: rooms (libraries) and test programs.

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

# No path of the building machine in the program: two builds of one commit are equal. A compiler cache names a source
# from the build folder, CMake names it from the root of the machine.
cmake_path(RELATIVE_PATH CMAKE_SOURCE_DIR BASE_DIRECTORY ${CMAKE_BINARY_DIR} OUTPUT_VARIABLE sourcesFromBuild)
add_library(tolv_options INTERFACE)
target_compile_options(tolv_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${sourcesFromBuild}/=)
target_include_directories(tolv_options INTERFACE ${CMAKE_SOURCE_DIR})
if(TOLV_SANITIZE)
    target_compile_options(tolv_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
        -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS)
    target_link_options(tolv_options INTERFACE -fsanitize=address,undefined)
endif()
if(TOLV_COVERAGE)
    target_compile_options(tolv_options INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(tolv_options INTERFACE --coverage)
endif()
if(WIN32)
    # Sections of their own, so that the linker leaves out the functions that a program does not use.
    target_compile_options(tolv_options INTERFACE -fstack-protector-strong -ffunction-sections -fdata-sections)
    target_link_options(tolv_options INTERFACE -fstack-protector-strong)
    target_compile_definitions(tolv_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()

# Sets `variable` to sources that each take in several of these: most of the time to compile goes into the headers of
# the standard library, of Windows and of the test framework, which so are read once for many. Named from the project's
# root, so that a compiler cache knows them in every clone; CMake's own way to do this writes absolute paths. The tidy
# check compiles each source alone, so none may lean on what its neighbour includes.
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

# tolv_room(NAME [TOGETHER] [SOURCES file...] [USES room...]): the library of one room, named for its folder
# ("ado/embedded" is ado_embedded). Without sources it is a room of headers alone. TOGETHER is for rooms that a program
# needs as a whole: of others a linker takes only the objects that are used, which keeps the Windows tool below 1 MB.
function(tolv_room name)
    cmake_parse_arguments(ROOM "TOGETHER" "" "SOURCES;USES" ${ARGN})
    if(ROOM_SOURCES)
        if(TOLV_TOGETHER AND (ROOM_TOGETHER OR TOLV_SANITIZE))
            tolv_together(ROOM_SOURCES ${name} ${ROOM_SOURCES})
        endif()
        add_library(${name} STATIC ${ROOM_SOURCES})
        target_link_libraries(${name} PUBLIC tolv_options ${ROOM_USES})
    else()
        add_library(${name} INTERFACE)
        target_link_libraries(${name} INTERFACE tolv_options ${ROOM_USES})
    endif()
endfunction()

# tolv_program(NAME DESCRIPTION text): icon, version block and, from the file NAME.manifest.in beside the program's own
# CMake file, the manifest of a Windows program; where its file goes, and how it is linked to be shipped.
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
    # Stripped while linking: a later strip would write the date into the file.
    target_link_options(${name} PRIVATE -municode $<$<CONFIG:Release>:-s> -Wl,--gc-sections)
endfunction()

# tolv_fast(ROOM...): where rows and pages are many. The Windows programs are built for size elsewhere: the tool is to
# stay below 1 MB.
function(tolv_fast)
    foreach(name ${ARGN})
        if(WIN32)
            target_compile_options(${name} PRIVATE -O2)
        endif()
    endforeach()
endfunction()

# tolv_test(NAME SOURCES file... USES room...): one test program a room, run as one entry of ctest.
function(tolv_test name)
    cmake_parse_arguments(TEST "" "" "SOURCES;USES" ${ARGN})
    if(TOLV_TOGETHER)
        tolv_together(TEST_SOURCES ${name} ${TEST_SOURCES})
    endif()
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE tolv_options ${TEST_USES} GTest::gmock_main)
    if(TOLV_SANITIZE)
        # Optimising the test framework's templates with checks in them takes longer than running them as they are.
        target_compile_options(${name} PRIVATE -O0)
    endif()
    add_test(NAME ${name} COMMAND ${name})
endfunction()
