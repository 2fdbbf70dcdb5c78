# VOREL32.DLL, and its import libraries for both linkers.
include(exports/lists.cmake)
set(def ${CMAKE_CURRENT_BINARY_DIR}/vorel32.def)
add_library(vorel32_dll SHARED $<TARGET_OBJECTS:vorel_exports> exports/vorel32.rc print/dialogs.rc ${def})
set_source_files_properties(print/dialogs.rc PROPERTIES OBJECT_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/print/dialog_ids.h)
target_link_libraries(vorel32_dll PRIVATE ${subsystems} vorel_dll_entry gdi32 user32 winspool)
target_link_options(vorel32_dll PRIVATE -Wl,--enable-stdcall-fixup,--kill-at)
set_target_properties(vorel32_dll PROPERTIES PREFIX "" OUTPUT_NAME VOREL32 SUFFIX .DLL ARCHIVE_OUTPUT_NAME unused)

# Callers' object files ask for _Name@N, the DLL exports the plain name. The import libraries know both.
set(decorated ${CMAKE_CURRENT_BINARY_DIR}/vorel32-decorated.def)
set(mingw_library ${PROJECT_BINARY_DIR}/bin/libvorel32.a)
set(microsoft_library ${PROJECT_BINARY_DIR}/bin/VOREL32.lib)
find_program(VOREL_LLVM_DLLTOOL llvm-dlltool REQUIRED)
add_custom_command(
  OUTPUT ${mingw_library} ${microsoft_library}
  COMMAND ${CMAKE_DLLTOOL} --kill-at --input-def ${decorated} --output-lib ${mingw_library}
  COMMAND ${VOREL_LLVM_DLLTOOL} -m i386 -k -d ${decorated} -l ${microsoft_library}
  DEPENDS ${decorated}
  VERBATIM
  COMMENT "Making import libraries")
add_custom_target(vorel32_import_libraries ALL DEPENDS ${mingw_library} ${microsoft_library})

# The target that programs link with.
add_library(vorel32 INTERFACE)
add_dependencies(vorel32 vorel32_dll vorel32_import_libraries)
target_include_directories(vorel32 INTERFACE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(vorel32 INTERFACE ${mingw_library})

install(TARGETS vorel32_dll RUNTIME)
install(FILES ${mingw_library} ${microsoft_library} TYPE LIB)
install(FILES ${PROJECT_SOURCE_DIR}/include/vorel32.h TYPE INCLUDE)
