# The library needs a compiler alone. The other pieces need packages, and leave themselves
# out where one is missing, unless WAVEFILTERS_REQUIRE_ALL makes that an error.

# piece(folder wanted): adds a folder that calls piece_needs() for its packages.
function(piece folder wanted)
  if(wanted AND EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/CMakeLists.txt)
    add_subdirectory(${folder})
  endif()
endfunction()

# piece_missing(piece what package): to be followed by return() in the piece's own file.
function(piece_missing piece what package)
  if(WAVEFILTERS_REQUIRE_ALL)
    message(FATAL_ERROR "${piece}: ${what} is missing (Debian package ${package})")
  endif()
  message(STATUS "${piece}: left out, ${what} is missing (Debian package ${package})")
endfunction()
