# Switches, compiler settings and the libraries that the engine needs.

include(GNUInstallDirs)

if(DEFINED BUILD_SHARED_LIBS)
  set(_shared ${BUILD_SHARED_LIBS})
else()
  set(_shared ON)
endif()
option(TESSARINE_SHARED "Build the library as a shared one" ${_shared})
option(TESSARINE_TESTS "Build the tests and examples" ${PROJECT_IS_TOP_LEVEL})
option(TESSARINE_CLI "Build the command line" ${PROJECT_IS_TOP_LEVEL})
option(TESSARINE_BENCH "Build the benchmarks" OFF)
option(TESSARINE_FUZZ "Build the fuzz targets with libFuzzer (clang only)" OFF)
option(TESSARINE_INSTALL "Create the installation rules" ${PROJECT_IS_TOP_LEVEL})
option(TESSARINE_WERROR "Treat warnings as errors" OFF)
option(TESSARINE_UNITY "Compile several sources at once" OFF)
set(TESSARINE_SANITIZE "" CACHE STRING "Value for -fsanitize, for example address,undefined; empty for none")

# ccache and precompiled headers serve the same end; together they need a loosened cache, so one of them is enough.
find_program(CCACHE_PROGRAM ccache)
mark_as_advanced(CCACHE_PROGRAM)
if(CCACHE_PROGRAM AND PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  # Without the build folder in the hash, several build folders of one source tree share their objects.
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CMAKE_COMMAND}" -E env CCACHE_NOHASHDIR=1 "${CCACHE_PROGRAM}")
endif()
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(_pch OFF)
else()
  set(_pch ON)
endif()
option(TESSARINE_PCH "Use precompiled headers" ${_pch})

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Boost 1.81 REQUIRED)
# What only sources include, by the names of pkg-config. A static library hands them on to its users.
set(TESSARINE_LIBRARY_MODULES libdeflate pugixml libpcre2-16 libcurl)
set(TESSARINE_PRIVATE_LIBRARIES Threads::Threads)
foreach(_module IN LISTS TESSARINE_LIBRARY_MODULES)
  pkg_check_modules(${_module} REQUIRED IMPORTED_TARGET ${_module})
  list(APPEND TESSARINE_PRIVATE_LIBRARIES PkgConfig::${_module})
endforeach()

# What every target of this tree is compiled with. Never part of the installed package.
add_library(tessarine_build_options INTERFACE)
target_include_directories(tessarine_build_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_features(tessarine_build_options INTERFACE cxx_std_20)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(TESSARINE_SANITIZE_FLAGS "")
if(MSVC)
  target_compile_options(tessarine_build_options INTERFACE /W4 /utf-8 /fp:precise /permissive-
                                                           $<$<BOOL:${TESSARINE_WERROR}>:/WX>)
else()
  # No contraction: a sum gives the same bits on every machine and in every path.
  target_compile_options(tessarine_build_options INTERFACE
    -ffp-contract=off -fno-semantic-interposition
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wimplicit-fallthrough
    $<$<BOOL:${TESSARINE_WERROR}>:-Werror>)
  if(TESSARINE_SANITIZE)
    set(TESSARINE_SANITIZE_FLAGS -fsanitize=${TESSARINE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(tessarine_build_options INTERFACE ${TESSARINE_SANITIZE_FLAGS})
    target_link_options(tessarine_build_options INTERFACE ${TESSARINE_SANITIZE_FLAGS})
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    if(TESSARINE_SANITIZE OR TESSARINE_UNITY OR TESSARINE_PCH OR CMAKE_BUILD_TYPE STREQUAL "Release")
      # Instrumented code, and deep inlining of the standard strings, confuse these flow analyses of g++ 12; development
      # builds that compile each source by itself keep them.
      target_compile_options(tessarine_build_options INTERFACE
        -Wno-maybe-uninitialized -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict
        -Wno-nonnull -Wno-null-dereference -Wno-tsan)
    endif()
    if(TESSARINE_UNITY)
      # Private types of a source that is included look like those of a header.
      target_compile_options(tessarine_build_options INTERFACE -Wno-subobject-linkage)
    endif()
  endif()
endif()
