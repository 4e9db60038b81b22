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
  -Wall -Wextra -Wconversion -Wshadow -Werror
  # A fused multiply-add rounds once where two roundings are promised.
  -ffp-contract=off)

if(WAVEFILTERS_SANITIZE)
  target_compile_options(wavefilters_flags INTERFACE
    -fsanitize=${WAVEFILTERS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  target_link_options(wavefilters_flags INTERFACE -fsanitize=${WAVEFILTERS_SANITIZE})
  if(WAVEFILTERS_SANITIZE MATCHES undefined)
    target_compile_options(wavefilters_flags INTERFACE -fsanitize=float-cast-overflow)
    target_link_options(wavefilters_flags INTERFACE -fsanitize=float-cast-overflow)
  endif()
endif()

# wavefilters_shared_library(name [options...]): links the library's sources under a name of their
# own; options are added to the compilation.
function(wavefilters_shared_library name)
  get_target_property(sources wavefilters_objects SOURCES)
  add_library(${name} SHARED ${sources})
  foreach(source ${sources})
    get_source_file_property(options ${source} TARGET_DIRECTORY wavefilters_objects COMPILE_OPTIONS)
    if(options)
      set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "${options}")
    endif()
  endforeach()
  target_link_libraries(${name} PRIVATE wavefilters_flags)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${ARGN})
  target_link_options(${name} PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/frame/exports.map -Wl,-z,defs -Wl,-z,relro,-z,now)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION 1
    LINK_DEPENDS ${PROJECT_SOURCE_DIR}/frame/exports.map)
endfunction()
