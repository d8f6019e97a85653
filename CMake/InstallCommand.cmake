# The command with what belongs to it: manual, completion, and the files that it reads. The component is called Command.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

set(manual ${CMAKE_CURRENT_BINARY_DIR}/corvane.1)
set(manual_sources ${CMAKE_CURRENT_SOURCE_DIR}/CMake/manual.py ${CMAKE_CURRENT_SOURCE_DIR}/CMake/corvane.1.in)
add_custom_command(OUTPUT ${manual}.gz
  COMMAND Python3::Interpreter ${manual_sources} $<TARGET_FILE:corvane> ${manual}
  COMMAND gzip --best --no-name --force ${manual}
  DEPENDS ${manual_sources} corvane VERBATIM)

set(completion ${CMAKE_CURRENT_BINARY_DIR}/completion/corvane)
file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/completion)
add_custom_command(OUTPUT ${completion} COMMAND corvane completion > ${completion} DEPENDS corvane VERBATIM)

set(changes ${CMAKE_CURRENT_BINARY_DIR}/changelog)
add_custom_command(OUTPUT ${changes}.gz
  COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md ${changes}
  COMMAND gzip --best --no-name --force ${changes}
  DEPENDS CHANGELOG.md VERBATIM)

add_custom_target(CommandFiles ALL DEPENDS ${manual}.gz ${completion} ${changes}.gz)

set(shared_files ${CMAKE_INSTALL_DATADIR}/corvane)
install(TARGETS corvane RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Command)
install(FILES ${manual}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT Command)
install(FILES ${changes}.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/corvane COMPONENT Command)
install(FILES ${completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Command)
install(DIRECTORY Examples/ DESTINATION ${shared_files}/examples COMPONENT Command PATTERN CppProject EXCLUDE)
install(DIRECTORY Docs/guides/ DESTINATION ${shared_files}/guides COMPONENT Command)
install(FILES Tools/Program/Reference/reference.css Tools/Program/Reference/copy.js Tools/Program/Reference/search.js
  DESTINATION ${shared_files}/reference COMPONENT Command)
