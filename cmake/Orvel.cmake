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
  target_include_directories(orvel_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
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
