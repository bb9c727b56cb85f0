# What `cmake --install` and `cpack` put where.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vorl)
install(TARGETS vorl EXPORT vorlTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
get_target_property(type vorl TYPE)
get_target_property(lto vorl INTERPROCEDURAL_OPTIMIZATION)
if(lto AND type STREQUAL "STATIC_LIBRARY" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The compiler's intermediate code serves only this very compiler, and slows each link down.
  install(CODE "set(archive \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:vorl>\")
    execute_process(COMMAND ${CMAKE_STRIP} -R .gnu.lto_* -R .gnu.debuglto_* -N __gnu_lto_v1
                            \${archive} COMMAND_ERROR_IS_FATAL ANY)")
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorl ${PROJECT_SOURCE_DIR}/export/vorl
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT vorlTargets NAMESPACE vorl:: DESTINATION ${config_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vorlConfig.cmake.in vorlConfig.cmake
                              INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(vorlConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorlConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vorlConfigVersion.cmake
        DESTINATION ${config_dir})

# The prefix may be chosen at installation, so the file tells it from its own place.
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(VORL_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(VORL_PC_LIBDIR ${CMAKE_INSTALL_FULL_LIBDIR})
  set(VORL_PC_INCLUDEDIR ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" up "${up}")
  set(VORL_PC_PREFIX "\${pcfiledir}/${up}")
  set(VORL_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(VORL_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/vorl.pc.in vorl.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

if(VORL_BUILD_CLI)
  install(TARGETS vorl_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${reference}/vorl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${reference}/vorl.bash RENAME vorl
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${reference}/_vorl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${reference}/vorl.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vorl)
set(CPACK_PACKAGE_CONTACT "The developers of vorl")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "hierarchical overlapping clustering of networks")
set(CPACK_PACKAGE_DESCRIPTION
    "vorl clusters a large network into a hierarchy of overlapping clusters: a
program, a C++ library with its headers and, where built, the Java binding.
The resolution is found by itself, and the result is the same on every run
and machine.")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded when a compressed network is read, so not found among the libraries that are linked.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "zlib1g, libzstd1")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ${BUILD_SHARED_LIBS})
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian.cmake)
include(CPack)
