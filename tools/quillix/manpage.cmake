# The manual page quillix.1, made by help2man from `quillix --help` once the tool is built, and
# installed under share/man/man1. The version comes from the project, so help2man never needs
# `quillix --version`; its standard error is kept, where CLI11 may print.
include(GNUInstallDirs)
find_program(QUILLIX_HELP2MAN help2man)
if(NOT QUILLIX_HELP2MAN)
  message(STATUS "help2man not found: quillix gets no manual page")
  return()
endif()

set(QUILLIX_MANPAGE ${PROJECT_BINARY_DIR}/man/quillix.1)
add_custom_command(
  OUTPUT ${QUILLIX_MANPAGE}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/man
  COMMAND ${QUILLIX_HELP2MAN} --no-info --no-discard-stderr
          --version-string=${PROJECT_VERSION}
          "--name=runs the Quillix plug-in's nodes and commands outside the host application"
          --output=${QUILLIX_MANPAGE} $<TARGET_FILE:quillix>
  DEPENDS quillix
  COMMENT "Writing the manual page of quillix"
  VERBATIM)
add_custom_target(quillix_manpage ALL DEPENDS ${QUILLIX_MANPAGE})
install(FILES ${QUILLIX_MANPAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
