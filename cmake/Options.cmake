# Switches of the build. All of them are for developers; a plain configure gives the Release program.
option(ZELMAR_TESTS "Build the tests (needs GoogleTest and GMP)" OFF)
option(ZELMAR_BENCH "Build the benchmarks (needs Google Benchmark and GMP)" OFF)
option(ZELMAR_WERROR "Treat warnings as errors" OFF)
set(ZELMAR_SANITIZE "" CACHE STRING "Sanitizers, comma separated: address,undefined or thread")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# Warnings for every target of this project.
add_library(zelmar_warnings INTERFACE)
target_compile_options(zelmar_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wcast-align -Wvla
  -Wnon-virtual-dtor -Wundef $<$<BOOL:${ZELMAR_WERROR}>:-Werror>)

# With the assertions, ours and the standard library's, in every build type.
if(ZELMAR_SANITIZE)
  add_compile_options(-fsanitize=${ZELMAR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
                      -UNDEBUG -D_GLIBCXX_ASSERTIONS)
  add_link_options(-fsanitize=${ZELMAR_SANITIZE})
endif()
