# Instruction set targets and the kernel files.
#
# A file named *_kernel.cpp is a kernel file: it alone is compiled with the target's instruction set flags.
# Everything else is baseline x86-64, so that the start-up feature check can run, and warn, on any machine.
#
# A further target (x64 AVX512) is a second entry in this file: another flag list, and another object library
# made of the same *_kernel.cpp files or of its own ones. Kernels are reached through plain external functions,
# so a program is linked with exactly one set of kernel objects and no dispatch stands in an inner loop.
set(ZELMAR_TARGET "x64_avx2" CACHE STRING "Instruction set target of the kernel files")
set_property(CACHE ZELMAR_TARGET PROPERTY STRINGS x64_avx2)

set(zelmar_flags_x64_avx2 -mavx2 -mfma -mbmi2 -mlzcnt -mpopcnt)

if(NOT DEFINED zelmar_flags_${ZELMAR_TARGET})
  message(FATAL_ERROR "Unknown ZELMAR_TARGET \"${ZELMAR_TARGET}\"")
endif()

# zelmar_folder(<name> [DEPENDS <folder targets>...] [EXTRA <globs>...])
# One static library for one folder of the house: zelmar_<name>.
function(zelmar_folder name)
  cmake_parse_arguments(arg "" "" "DEPENDS;EXTRA" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${name}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/shell/(main|console[a-z_]*)\\.cpp$")
  foreach(pattern IN LISTS arg_EXTRA)
    file(GLOB extra CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${pattern})
    list(APPEND sources ${extra})
  endforeach()
  set(kernels ${sources})
  list(FILTER kernels INCLUDE REGEX "_kernel\\.cpp$")
  list(FILTER sources EXCLUDE REGEX "_kernel\\.cpp$")

  if(NOT sources AND NOT kernels)
    add_library(zelmar_${name} INTERFACE)
    target_link_libraries(zelmar_${name} INTERFACE ${arg_DEPENDS})
    target_include_directories(zelmar_${name} INTERFACE ${PROJECT_SOURCE_DIR})
    return()
  endif()

  if(kernels)
    add_library(zelmar_${name}_kernels OBJECT ${kernels})
    target_compile_options(zelmar_${name}_kernels PRIVATE ${zelmar_flags_${ZELMAR_TARGET}})
    target_include_directories(zelmar_${name}_kernels PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(zelmar_${name}_kernels PRIVATE zelmar_warnings)
    list(APPEND sources $<TARGET_OBJECTS:zelmar_${name}_kernels>)
  endif()
  add_library(zelmar_${name} STATIC ${sources})
  target_include_directories(zelmar_${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(zelmar_${name} PUBLIC ${arg_DEPENDS} PRIVATE zelmar_warnings)
endfunction()
