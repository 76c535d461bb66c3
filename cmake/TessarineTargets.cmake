# Helpers for the folders that hold one program each, or one program a file.

# Collects the sources AOut of a folder and its subfolders.
function(tessarine_glob AOut AFolder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${AFolder}/*.cpp")
  set(${AOut} ${sources} PARENT_SCOPE)
endfunction()

# A program of ours, linked with the static archive. Further arguments: its sources.
function(tessarine_add_program AName)
  add_executable(${AName} ${ARGN})
  target_link_libraries(${AName} PRIVATE tessarine_static_for_tests)
endfunction()
