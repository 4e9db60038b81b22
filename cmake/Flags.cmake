# Flags that every target of this project is built with, and the way the library is linked.

add_library(wavefilters_flags INTERFACE)
target_compile_features(wavefilters_flags INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
# No link-time optimisation: it would see that nobody in here replaces a slot and
# bind calls that a host may have redirected by exchanging a vtable.
set(CMAKE_INTERPROCEDURAL_OPTIMIZATION OFF)

set(CMAKE_CXX_FLAGS_RELEASE "-O2")
set(CMAKE_C_FLAGS_RELEASE "-O2")
target_compile_options(wavefilters_flags INTERFACE
  -Wall -Wextra -Wconversion -Wshadow $<$<BOOL:${WAVEFILTERS_WERROR}>:-Werror>
  # A fused multiply-add rounds once where two roundings are promised.
  -ffp-contract=off
  -fstack-protector-strong)

# What the loader has filled in is read-only from then on, no stack holds code, programs lie at no
# fixed address. None of it stands in a kernel's inner loop or touches a sum: the loader pays once,
# the stack guard above a few instructions for each call of a function with an array.
target_link_options(wavefilters_flags INTERFACE -Wl,-z,relro,-z,now -Wl,-z,noexecstack)
if(NOT WAVEFILTERS_SANITIZE)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)
endif()

if(WAVEFILTERS_SANITIZE)
  set(sanitizers -fsanitize=${WAVEFILTERS_SANITIZE})
  if(WAVEFILTERS_SANITIZE MATCHES undefined)
    # GCC's "undefined" lacks it.
    list(APPEND sanitizers -fsanitize=float-cast-overflow)
  endif()
  # More takes the compiler twice as long, and hides what it has optimised away from the checks. What
  # computes is optimised all the same (wavefilters_optimised), or the tests would take as much longer.
  set(CMAKE_CXX_FLAGS_RELEASE "-O0")
  set(CMAKE_C_FLAGS_RELEASE "-O0")
  # For the whole folder: these come before a target's own options, which may take one back.
  add_compile_options(${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(${sanitizers})
  # The checks have a million pointers to places in the sources, which the loader would go through at each
  # start of a program that lies anywhere: a third of a short run.
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
else()
  set(optimised $<NOT:$<CONFIG:Debug>>)
  target_compile_options(wavefilters_flags INTERFACE
    # Needs optimisation, and would hide calls from AddressSanitizer that it checks itself.
    $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>
    # The folder that it was built in leaves no trace in a binary.
    $<${optimised}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
    $<${optimised}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
endif()

# wavefilters_optimised(target): in builds with sanitizers, too.
function(wavefilters_optimised target)
  if(WAVEFILTERS_SANITIZE)
    target_compile_options(${target} PRIVATE -O1)
  endif()
endfunction()

# wavefilters_shared_library(name [options...]): links the library's objects; where options are given,
# compiles the sources once more with them.
function(wavefilters_shared_library name)
  add_library(${name} SHARED)
  if(ARGN)
    get_target_property(sources wavefilters_objects SOURCES)
    target_sources(${name} PRIVATE ${sources})
    foreach(source ${sources})
      get_source_file_property(options ${source} TARGET_DIRECTORY wavefilters_objects COMPILE_OPTIONS)
      if(options)
        set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "${options}")
      endif()
    endforeach()
    target_link_libraries(${name} PRIVATE wavefilters_flags)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    wavefilters_optimised(${name})
    target_compile_options(${name} PRIVATE ${ARGN})
  else()
    target_link_libraries(${name} PRIVATE wavefilters_objects)
  endif()
  target_compile_features(${name} INTERFACE cxx_std_17)
  target_include_directories(${name} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/wavefilters>)
  target_link_options(${name} PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/frame/exports.map
    -Wl,--as-needed)
  # Clang leaves a sanitizer's runtime to the program that loads the library.
  if(NOT (WAVEFILTERS_SANITIZE AND CMAKE_CXX_COMPILER_ID MATCHES Clang))
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()
  set_target_properties(${name} PROPERTIES
    LINKER_LANGUAGE CXX
    VERSION ${PROJECT_VERSION} SOVERSION 1
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/frame/exports.map)
endfunction()
