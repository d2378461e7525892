# How every target of this project is compiled.

find_program(WAYFENCE_CCACHE ccache)
if(WAYFENCE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${WAYFENCE_CCACHE})
endif()
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

# Warnings are errors. No contraction of floating-point operations: results do not depend on the
# processor.
function(wayfence_compile_options target)
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
    -Wconversion -Wno-sign-conversion -Woverloaded-virtual -Wimplicit-fallthrough -Werror
    -ffp-contract=off)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees these in its own standard library when it inlines deeply; the second one whenever
    # a text is put before another.
    target_compile_options(${target} PRIVATE
      -Wno-error=maybe-uninitialized -Wno-restrict -Wno-error=stringop-overflow
      -Wno-error=array-bounds)
  endif()
  if(WAYFENCE_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${WAYFENCE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${WAYFENCE_SANITIZE})
  endif()
  if(WAYFENCE_FUZZ AND WAYFENCE_SANITIZE)
    # The coverage that guides the fuzzer; the fuzz targets alone bring its main function.
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()
