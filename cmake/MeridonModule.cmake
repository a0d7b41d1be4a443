# meridon_add_module(<name> CLASS <GAME_Init|GAME_Mod|SERVER_Mod|MERIDON_Mod> SOURCES <files...> [ROOT <dir>])
#
# Builds <ROOT>/modules/<name>/<name>.<CLASS>.so, the path the game's loader opens. ROOT defaults to the game tree
# of the Meridon build, or to the build folder of a project outside it, whose modules/ the launcher then takes with
# `--module-path <build>/modules`. The module sees the game library's headers and exported classes; it links nothing
# else of ours.
#
# SERVER_Mod and MERIDON_Mod modules build against Meridon::server, which needs neither Vulkan's nor ImGui's headers:
# include modules/ServerModuleApi.h. GAME_Init and GAME_Mod modules build against Meridon::client, which adds both
# (modules/ModuleApi.h). A content module that needs the client's headers too links Meridon::client itself.
function(meridon_add_module name)
  cmake_parse_arguments(ARG "" "CLASS;ROOT" "SOURCES" ${ARGN})
  if(ARG_CLASS MATCHES "^(SERVER_Mod|MERIDON_Mod)$")
    set(api Meridon::server)
  elseif(ARG_CLASS MATCHES "^(GAME_Init|GAME_Mod)$")
    set(api Meridon::client)
    # An installed Meridon looks for these without requiring them, as server modules do without.
    if(NOT TARGET Vulkan::Vulkan OR NOT TARGET PkgConfig::IMGUI)
      message(FATAL_ERROR "meridon_add_module(${name}): a ${ARG_CLASS} module needs the Vulkan and ImGui headers "
        "(Debian packages libvulkan-dev and libimgui-dev), which were not found")
    endif()
  else()
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
  target_link_libraries(${target} PRIVATE ${api})
  if(TARGET meridon_warnings)
    target_link_libraries(${target} PRIVATE meridon_warnings)
  endif()
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    OUTPUT_NAME "${target}"
    LIBRARY_OUTPUT_DIRECTORY "${ARG_ROOT}/modules/${name}")
  # The Meridon build's own game tree is installed whole (cmake/Install.cmake), its modules with it.
  if(MERIDON_ROOT_DIR AND ARG_ROOT STREQUAL MERIDON_ROOT_DIR)
    set_property(GLOBAL APPEND PROPERTY MERIDON_BUNDLED_MODULES ${target})
  endif()
endfunction()
