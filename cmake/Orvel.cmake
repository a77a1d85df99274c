# Build helpers shared by every module: one warning list, optional sanitizers.

set(ORVEL_WARNINGS -Wall -Wextra -Wpedantic)
if(ORVEL_WERROR)
  list(APPEND ORVEL_WARNINGS -Werror)
endif()

if(ORVEL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# orvel_add_library(name SOURCES ... DEPENDS ...): a static module library with an orvel:: alias.
function(orvel_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(orvel_${name} STATIC ${ARG_SOURCES})
  add_library(orvel::${name} ALIAS orvel_${name})
  target_include_directories(orvel_${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
  target_compile_options(orvel_${name} PRIVATE ${ORVEL_WARNINGS})
  target_link_libraries(orvel_${name} PUBLIC ${ARG_DEPENDS})
  # glib's headers (through libvips) use the word "signals"; Qt's keyword macros would break them.
  target_compile_definitions(orvel_${name} PUBLIC QT_NO_KEYWORDS)
endfunction()

# orvel_add_test(name SOURCES ... DEPENDS ...): a GoogleTest executable linked with the shared test main.
function(orvel_add_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${ORVEL_WARNINGS})
  target_link_libraries(${name} PRIVATE orvel_testlib ${ARG_DEPENDS})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;ORVEL_THUMBS=$<TARGET_FILE:orvel-thumbs>"
    TIMEOUT 600)
endfunction()

# orvel_install_toolkit(MODULES ... LIBRARIES ...): installs the toolkit for other programs: each
# module's public headers (private "_p.h" headers stay behind) under include/orvelkit/<module>/, the
# static libraries, and the CMake package OrvelKit (targets OrvelKit::<library>) with one pkg-config
# file per library. The libraries of the application (orvel_app_*) are not part of it.
function(orvel_install_toolkit)
  cmake_parse_arguments(ARG "" "" "MODULES;LIBRARIES;EXTRA_TARGETS" ${ARGN})
  set(includedir ${CMAKE_INSTALL_INCLUDEDIR}/orvelkit)
  foreach(module IN LISTS ARG_MODULES)
    install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/${module}/ DESTINATION ${includedir}/${module}
      COMPONENT devel FILES_MATCHING PATTERN "*.h" PATTERN "*_p.h" EXCLUDE)
  endforeach()
  foreach(lib IN LISTS ARG_LIBRARIES)
    set_target_properties(orvel_${lib} PROPERTIES EXPORT_NAME ${lib})
    target_include_directories(orvel_${lib} INTERFACE $<INSTALL_INTERFACE:${includedir}>)
    # pkg-config: what the library links, as other pkg-config modules and -l flags.
    set(requires "")
    get_target_property(deps orvel_${lib} INTERFACE_LINK_LIBRARIES)
    foreach(dep IN LISTS deps)
      if(dep MATCHES "_resources_[0-9]+")
        # the compiled-in tables, linked through orvel_<name>_tables below
      elseif(dep MATCHES "^orvel::(.+)$")
        string(APPEND requires " orvelkit-${CMAKE_MATCH_1}")
      elseif(dep MATCHES "^orvel_(.+)$")
        string(APPEND requires " orvelkit-${CMAKE_MATCH_1}")
      elseif(dep MATCHES "^Qt6::(.+)$")
        string(APPEND requires " Qt6${CMAKE_MATCH_1}")
      elseif(dep STREQUAL "PkgConfig::VIPS")
        string(APPEND requires " vips-cpp")
      elseif(dep STREQUAL "PkgConfig::POPPLER")
        string(APPEND requires " poppler-qt6")
      elseif(dep STREQUAL "PkgConfig::LIBJPEG")
        string(APPEND requires " libjpeg")
      elseif(dep STREQUAL "PkgConfig::LIBARCHIVE")
        string(APPEND requires " libarchive")
      elseif(dep STREQUAL "PkgConfig::LIBPNG")
        string(APPEND requires " libpng")
      elseif(dep STREQUAL "PkgConfig::PLIST")
        string(APPEND requires " libplist-2.0")
      endif()
    endforeach()
    # A library's compiled-in resources register themselves from static initialisers that nothing
    # references: linked whole, or they would be left out.
    set(ORVELKIT_PC_TABLES "")
    if(TARGET orvel_${lib}_tables)
      set(ORVELKIT_PC_TABLES " -Wl,--whole-archive -lorvel_${lib}_tables -Wl,--no-whole-archive")
      install(TARGETS orvel_${lib}_tables ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel)
    endif()
    set(ORVELKIT_PC_NAME ${lib})
    # Relative, so that the files hold wherever the tree is installed (cmake --install --prefix).
    file(RELATIVE_PATH ORVELKIT_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
    string(REGEX REPLACE "/$" "" ORVELKIT_PC_TO_PREFIX "${ORVELKIT_PC_TO_PREFIX}")
    set(ORVELKIT_PC_REQUIRES ${requires})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/orvelkit.pc.in
      ${PROJECT_BINARY_DIR}/pkgconfig/orvelkit-${lib}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/orvelkit-${lib}.pc
      DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT devel)
    list(APPEND targets orvel_${lib})
  endforeach()
  install(TARGETS ${targets} ${ARG_EXTRA_TARGETS} EXPORT OrvelKitTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT devel
    OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR}/orvelkit-objects COMPONENT devel
    INCLUDES DESTINATION ${includedir})
  set(cmakedir ${CMAKE_INSTALL_LIBDIR}/cmake/OrvelKit)
  install(EXPORT OrvelKitTargets NAMESPACE OrvelKit:: DESTINATION ${cmakedir} COMPONENT devel)
  include(CMakePackageConfigHelpers)
  configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/OrvelKitConfig.cmake.in
    ${PROJECT_BINARY_DIR}/OrvelKitConfig.cmake INSTALL_DESTINATION ${cmakedir})
  write_basic_package_version_file(${PROJECT_BINARY_DIR}/OrvelKitConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
  install(FILES ${PROJECT_BINARY_DIR}/OrvelKitConfig.cmake ${PROJECT_BINARY_DIR}/OrvelKitConfigVersion.cmake
    DESTINATION ${cmakedir} COMPONENT devel)
endfunction()
