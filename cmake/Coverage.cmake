# Counts how often each line and branch of the library and the program runs, for ./coverage.
# What counts is compiled without optimisation, so that every branch is still one. The unit tests are
# among it, since inline functions of headers run in them. Included once all targets are there.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  message(FATAL_ERROR "WAVEFILTERS_COVERAGE needs g++")
endif()
set(counted wavefilters_objects)
if(TARGET wavechain)
  list(APPEND counted wavefilters_host wavechain)
endif()
if(TARGET test_support)
  get_property(unitTests DIRECTORY tests/unit PROPERTY BUILDSYSTEM_TARGETS)
  list(APPEND counted ${unitTests})
  # GoogleTest was read with other flags than theirs are now.
  set_target_properties(${unitTests} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
endif()
foreach(target ${counted})
  target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path -O0)
endforeach()
# Kernels have an -O3 of their own otherwise.
get_target_property(sources wavefilters_objects SOURCES)
set_source_files_properties(${sources} TARGET_DIRECTORY wavefilters_objects PROPERTIES COMPILE_OPTIONS "")
target_link_options(wavefilters_flags INTERFACE --coverage)
