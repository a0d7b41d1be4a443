# meridon_add_module(<name> CLASS <GAME_Init|GAME_Mod|SERVER_Mod|MERIDON_Mod> SOURCES <files...> [ROOT <dir>])
#
# Builds <ROOT>/modules/<name>/<name>.<CLASS>.so, the path the game's loader opens. ROOT defaults to the game tree
# of the Meridon build, or to the build folder of a project outside it. The module sees the game library's headers and exported classes; it links nothing else of ours.
function(meridon_add_module name)
  cmake_parse_arguments(ARG "" "CLASS;ROOT" "SOURCES" ${ARGN})
  if(NOT ARG_CLASS MATCHES "^(GAME_Init|GAME_Mod|SERVER_Mod|MERIDON_Mod)$")
    message(FATAL_ERROR "meridon_add_module(${name}): CLASS must be GAME_Init, GAME_Mod, SERVER_Mod or MERIDON_Mod, not '${ARG_CLASS}'")
  endif()
  if(NOT ARG_ROOT)
    if(MERIDON_ROOT_DIR)
      set(ARG_ROOT "${MERIDON_ROOT_DIR}")
    else()
      set(ARG_ROOT "${CMAKE_BINARY_DIR}")
    endif()
  endif()
  set(target "${name}.${ARG_CLASS}")
  add_library(${target} MODULE ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE Meridon::meridon)
  if(TARGET meridon_warnings)
    target_link_libraries(${target} PRIVATE meridon_warnings)
  endif()
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    OUTPUT_NAME "${target}"
    LIBRARY_OUTPUT_DIRECTORY "${ARG_ROOT}/modules/${name}")
endfunction()
