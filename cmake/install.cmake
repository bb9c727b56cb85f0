# What `cmake --install` and `cpack` put where. The components are the packages of Debian.
include(CMakePackageConfigHelpers)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vorl)
install(TARGETS vorl EXPORT vorlTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT headers
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT headers)
get_target_property(type vorl TYPE)
get_target_property(lto vorl INTERPROCEDURAL_OPTIMIZATION)
if(lto AND type STREQUAL "STATIC_LIBRARY" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The compiler's intermediate code serves only this very compiler, and slows each link down.
  install(CODE "set(archive \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/$<TARGET_FILE_NAME:vorl>\")
    execute_process(COMMAND ${CMAKE_STRIP} -R .gnu.lto_* -R .gnu.debuglto_* -N __gnu_lto_v1
                            \${archive} COMMAND_ERROR_IS_FATAL ANY)" COMPONENT headers)
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vorl ${PROJECT_SOURCE_DIR}/export/vorl
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT headers)
install(EXPORT vorlTargets NAMESPACE vorl:: DESTINATION ${config_dir} COMPONENT headers)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/vorlConfig.cmake.in vorlConfig.cmake
                              INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(vorlConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorlConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/vorlConfigVersion.cmake
        DESTINATION ${config_dir} COMPONENT headers)

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
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vorl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT headers)

# README and guide, with the networks that they cluster.
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/NOTICE
              ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/data
                  ${PROJECT_SOURCE_DIR}/examples
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program USE_SOURCE_PERMISSIONS
        PATTERN Doxyfile EXCLUDE
        PATTERN data/fuzz EXCLUDE)

if(VORL_BUILD_CLI)
  install(TARGETS vorl_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  install(FILES ${reference}/vorl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
  install(FILES ${reference}/vorl.bash RENAME vorl
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  install(FILES ${reference}/_vorl DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions
          COMPONENT program)
  install(FILES ${reference}/vorl.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
endif()

include(${PROJECT_SOURCE_DIR}/cmake/packages.cmake)
