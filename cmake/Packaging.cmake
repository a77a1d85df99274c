# Debian packages through CPack (scripts/package.sh runs it): orvel-thumbnails holds the programs,
# the engine and the desktop data; liborvelkit-dev the toolkit's headers, static libraries, CMake
# package and pkg-config files. Every install() rule belongs to the component "program" unless it
# names "devel".

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvel-thumbnails)
set(CPACK_PACKAGE_VENDOR "The Orvel Thumbnails developers")
set(CPACK_PACKAGE_CONTACT "The Orvel Thumbnails developers <maintainers@orvel.org>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://orvel.org/thumbnails")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL program devel)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME orvel-thumbnails)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION graphics)
# FFmpeg's libraries are opened at run time (the first movie loads them) and Ghostscript runs as a
# child: neither shows up in the programs' own links, so they are named here.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS
  "ghostscript, libavformat59, libavcodec59, libswscale6, libavutil57, libarchive13, shared-mime-info")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_RECOMMENDS "bash-completion, xdg-utils")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
  "thumbnails of pictures, documents and movies, in batches
Orvel Thumbnails writes a scaled, optionally sharpened thumbnail beside every
picture, PDF or PostScript document and movie it is given, as TIFF, BMP, GIF,
JPEG, PNG or JPEG 2000, or gives the file a custom icon. It has a desktop
application with a preferences panel and a command line (orvel-thumbs) for
batches on several cores.")

set(CPACK_DEBIAN_DEVEL_PACKAGE_NAME liborvelkit-dev)
set(CPACK_DEBIAN_DEVEL_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVEL_PACKAGE_DEPENDS
  "qt6-base-dev, libvips-dev, libpoppler-qt6-dev, libavformat-dev, libavcodec-dev, libswscale-dev, libarchive-dev, pkg-config")
set(CPACK_COMPONENT_DEVEL_DESCRIPTION
  "toolkit beneath Orvel Thumbnails (development files)
OrvelKit is a C++20 toolkit on Qt 6: images and filters, movie frames, files
and resource forks, string matching and comparison, URLs, application support
and vCard persons. This package holds its headers, static libraries, CMake
package (find_package(OrvelKit)) and pkg-config files.")

# Each package carries the copyright file and a compressed changelog where Debian's policy wants them.
foreach(component program devel)
  if(component STREQUAL program)
    set(package orvel-thumbnails)
  else()
    set(package liborvelkit-dev)
  endif()
  set(docdir ${CMAKE_CURRENT_BINARY_DIR}/debian-doc/${package})
  file(MAKE_DIRECTORY ${docdir})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/debian-copyright.in ${docdir}/copyright @ONLY)
  file(WRITE ${docdir}/changelog.Debian
    "${package} (${PROJECT_VERSION}-1) unstable; urgency=medium\n\n"
    "  * Release ${PROJECT_VERSION}.\n\n"
    " -- ${CPACK_PACKAGE_CONTACT}  Mon, 23 Nov 2026 12:00:00 +0000\n")
  execute_process(COMMAND gzip -9nf ${docdir}/changelog.Debian)
  install(FILES ${docdir}/copyright ${docdir}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endforeach()

include(CPack)
