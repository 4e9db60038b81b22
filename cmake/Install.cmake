# What cmake --install brings: the library, the headers that a host includes, the CMake package and
# the pkg-config file. Both find the rest from where they lie, so the tree may be moved as a whole.

include(CMakePackageConfigHelpers)

install(TARGETS wavefilters EXPORT WaveFiltersTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET wavechain)
  install(TARGETS wavechain RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  set(texts ${PROJECT_BINARY_DIR}/share)
  install(FILES ${texts}/man DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 RENAME wavechain.1)
  install(FILES ${texts}/bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME wavechain)
  install(FILES ${texts}/zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions RENAME _wavechain)
  install(FILES ${texts}/fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d RENAME wavechain.fish)
endif()
foreach(header guid interfaces lifetime ref unknown)
  install(FILES ${PROJECT_SOURCE_DIR}/frame/${header}.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/wavefilters/frame)
endforeach()

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/WaveFilters)
install(EXPORT WaveFiltersTargets NAMESPACE WaveFilters:: DESTINATION ${packageFolder}
  FILE WaveFiltersConfig.cmake)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/WaveFiltersConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/WaveFiltersConfigVersion.cmake DESTINATION ${packageFolder})

set(pkgConfigFolder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(pkgConfigPrefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH upToPrefix /${pkgConfigFolder} /)
  set(pkgConfigPrefix "\${pcfiledir}/${upToPrefix}")
  string(REGEX REPLACE "/$" "" pkgConfigPrefix "${pkgConfigPrefix}")
endif()
cmake_path(APPEND pkgConfigLibdir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pkgConfigIncludedir "\${prefix}" ${CMAKE_INSTALL_INCLUDEDIR})
configure_file(${PROJECT_SOURCE_DIR}/cmake/wavefilters.pc.in ${PROJECT_BINARY_DIR}/wavefilters.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/wavefilters.pc DESTINATION ${pkgConfigFolder})

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
