find_program(GLSLC_EXECUTABLE glslc REQUIRED DOC "The GLSL to SPIR-V compiler (Debian package glslc)")

# quorl_shaders(<target> <tree> <sources...>): compiles each GLSL source, given relative to the repository root, to
# <tree>/<source>.spv (game/graphics/crosshair.vert -> <tree>/game/graphics/crosshair.vert.spv), where
# quorl::vk::Shader::Load finds it relative to the game's working directory.
function(quorl_shaders target tree)
  set(outputs)
  foreach(source IN LISTS ARGN)
    set(output "${tree}/${source}.spv")
    cmake_path(GET output PARENT_PATH dir)
    add_custom_command(OUTPUT "${output}"
      COMMAND ${CMAKE_COMMAND} -E make_directory "${dir}"
      COMMAND "${GLSLC_EXECUTABLE}" --target-env=vulkan1.3 -O -o "${output}" "${PROJECT_SOURCE_DIR}/${source}"
      DEPENDS "${PROJECT_SOURCE_DIR}/${source}"
      COMMENT "Compiling shader ${source}"
      VERBATIM)
    list(APPEND outputs "${output}")
  endforeach()
  add_custom_target(${target} ALL DEPENDS ${outputs})
endfunction()
