# reflect_headers(TARGET <target> MODULE <name> HEADERS <header>... [REFERENCE <header>...])
#
# Runs the header tool over the headers of one module, compiles what it writes into the target and lets the target's users
# include the generated headers. REFERENCE names headers of other modules whose types these headers build on. Headers
# without reflected types may be among them.
function(reflect_headers)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "TARGET;MODULE" "HEADERS;REFERENCE")
  if(NOT arg_TARGET OR NOT arg_MODULE OR NOT arg_HEADERS OR arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "reflect_headers needs TARGET, MODULE and HEADERS; not understood: '${arg_UNPARSED_ARGUMENTS}'")
  endif()

  set(output ${CMAKE_CURRENT_BINARY_DIR}/Generated/${arg_MODULE})
  set(stamp ${output}.stamp)
  set(sources "")
  set(generated "")
  foreach(header IN LISTS arg_HEADERS)
    cmake_path(GET header STEM LAST_ONLY base)
    list(APPEND sources ${output}/${base}.gen.cpp)
    list(APPEND generated ${output}/${base}.gen.cpp ${output}/${base}.generated.h)
  endforeach()
  set(reference_options "")
  foreach(header IN LISTS arg_REFERENCE)
    list(APPEND reference_options --reference ${header})
  endforeach()

  # The tool leaves unchanged files alone, so the stamp is what tells that it has run.
  add_custom_command(OUTPUT ${stamp}
    BYPRODUCTS ${generated}
    COMMAND HeaderTool --module ${arg_MODULE} --output ${output} ${reference_options} ${arg_HEADERS}
    COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
    DEPENDS HeaderTool ${arg_HEADERS} ${arg_REFERENCE}
    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
    COMMENT "Reading the reflection macros of ${arg_MODULE}"
    VERBATIM)
  add_custom_target(${arg_TARGET}Reflection DEPENDS ${stamp})
  add_dependencies(${arg_TARGET} ${arg_TARGET}Reflection)
  set_source_files_properties(${generated} PROPERTIES GENERATED TRUE)
  target_sources(${arg_TARGET} PRIVATE ${sources})
  target_include_directories(${arg_TARGET} PUBLIC $<BUILD_INTERFACE:${output}>)
endfunction()
