# The helper calls of the folders' CMakeLists.txt files. A call with an empty list is allowed and does nothing.

function(surveillance_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # g++ 12 sees overlap in every "literal" + std::string.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    elseif(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        # Not part of g++'s -Wconversion; the two judge alike.
        target_compile_options(${target} PRIVATE -Wno-sign-conversion)
    endif()
    if(SURVEILLANCE_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# Tests and the reference host are built for a quick build; the library they drive is optimised as the build type says.
function(surveillance_quick_build target)
    if(NOT SURVEILLANCE_SANITIZE)
        target_compile_options(${target} PRIVATE -O1)
    endif()
endfunction()

# surveillance_sources(FILE...): sources of the library.
function(surveillance_sources)
    target_sources(surveillance_objects PRIVATE ${ARGN})
endfunction()

# Adds the object library `name`, which exists only once it has a source.
function(surveillance_object_library name)
    if(ARGN)
        add_library(${name} OBJECT ${ARGN})
        surveillance_warnings(${name})
        surveillance_quick_build(${name})
    endif()
endfunction()

# Adds the executable of a test folder and tells ctest its cases as <folder>.<Suite>.<Case>.
function(surveillance_test_executable target folder)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${target} ${arg_SOURCES})
    surveillance_warnings(${target})
    surveillance_quick_build(${target})
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} GTest::gtest_main)
    target_compile_definitions(${target} PRIVATE SURVEILLANCE_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
    gtest_discover_tests(${target} TEST_PREFIX ${folder}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300)
endfunction()

# surveillance_tests(FOLDER FILE...): unit tests; they link the library's objects and tests/support.
function(surveillance_tests folder)
    if(ARGN)
        set(support surveillance_objects)
        if(TARGET surveillance_test_support)
            list(APPEND support surveillance_test_support)
        endif()
        surveillance_test_executable(${folder}_tests ${folder} SOURCES ${ARGN} LIBRARIES ${support})
        target_include_directories(${folder}_tests PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    endif()
endfunction()

# surveillance_boundary_tests(FOLDER FILE...): tests that see what a host sees, the public headers and the .so.
function(surveillance_boundary_tests folder)
    if(ARGN)
        surveillance_test_executable(${folder}_boundary_tests ${folder}.boundary
            SOURCES ${ARGN} LIBRARIES surveillance)
    endif()
endfunction()

# surveillance_host_tests(FOLDER FILE...): tests of the reference host's own parts.
function(surveillance_host_tests folder)
    if(ARGN)
        surveillance_test_executable(${folder}_tests ${folder} SOURCES ${ARGN} LIBRARIES survhost_objects)
    endif()
endfunction()
