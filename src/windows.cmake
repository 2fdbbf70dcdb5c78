# The DLL, and its import libraries for both linkers.
include(exports/lists.cmake)
set(def ${CMAKE_CURRENT_BINARY_DIR}/vorel32.def)
add_library(vorel32_dll SHARED $<TARGET_OBJECTS:vorel_exports> print/dialogs.rc ${def})
set_source_files_properties(print/dialogs.rc PROPERTIES OBJECT_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/print/dialog_ids.h)
target_link_libraries(vorel32_dll PRIVATE ${subsystems} vorel_dll_entry gdi32 user32 winspool)
target_link_options(vorel32_dll PRIVATE -Wl,--enable-stdcall-fixup,--kill-at)
set_target_properties(vorel32_dll PROPERTIES PREFIX "" OUTPUT_NAME ${VOREL_NAME} SUFFIX .DLL ARCHIVE_OUTPUT_NAME unused)
vorel_version(vorel32_dll "Vorel32 imaging library")

# Callers' object files ask for decorated names, the DLL exports the plain ones. The import libraries know both.
set(decorated ${CMAKE_CURRENT_BINARY_DIR}/vorel32-decorated.def)
string(TOLOWER ${VOREL_NAME} library_name)
set(libraries ${PROJECT_BINARY_DIR}/bin)
file(MAKE_DIRECTORY ${libraries})
set(mingw_library ${libraries}/lib${library_name}.a)
set(microsoft_library ${libraries}/${VOREL_NAME}.lib)
set(machine i386)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(machine i386:x86-64)
endif()
find_program(VOREL_LLVM_DLLTOOL llvm-dlltool REQUIRED)
# Symbols contain the library's path as it is given, so a relative one gives the same file in every folder.
add_custom_command(
  OUTPUT ${mingw_library} ${microsoft_library}
  COMMAND ${CMAKE_DLLTOOL} --kill-at --deterministic-libraries --temp-prefix ${library_name} --input-def ${decorated}
          --output-lib lib${library_name}.a
  COMMAND ${VOREL_LLVM_DLLTOOL} -m ${machine} -k -d ${decorated} -l ${microsoft_library}
  WORKING_DIRECTORY ${libraries}
  DEPENDS ${decorated}
  VERBATIM
  COMMENT "Making import libraries")
add_custom_target(vorel32_import_libraries ALL DEPENDS ${mingw_library} ${microsoft_library})

# The target that programs link with.
add_library(vorel32 INTERFACE)
add_dependencies(vorel32 vorel32_dll vorel32_import_libraries)
target_include_directories(vorel32 INTERFACE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(vorel32 INTERFACE ${mingw_library})

install(FILES $<TARGET_FILE:vorel32_dll> TYPE BIN COMPONENT library)
install(FILES ${mingw_library} ${microsoft_library} TYPE LIB COMPONENT development)
include(packages.cmake)
