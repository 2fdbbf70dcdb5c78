# libvorel32.so: exports the functions of the table and nothing else.
include(exports/lists.cmake)
set(map ${CMAKE_CURRENT_BINARY_DIR}/libvorel32.map)
add_library(vorel32 SHARED $<TARGET_OBJECTS:vorel_exports> $<TARGET_OBJECTS:vorel_memory>)
target_include_directories(vorel32 PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
target_link_libraries(vorel32 PRIVATE ${subsystems})
target_link_options(vorel32 PRIVATE -Wl,--version-script=${map} -Wl,-z,nodelete)
if(NOT VOREL_SANITIZE)
  target_link_options(vorel32 PRIVATE -Wl,--no-undefined)
endif()
# No run path: modules are loaded from the library's folder by their full paths, else from the program's search path.
set_target_properties(vorel32 PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 5 LINK_DEPENDS ${map} INSTALL_RPATH "")

set(library_name vorel32)
install(TARGETS vorel32 LIBRARY COMPONENT library NAMELINK_COMPONENT development)
include(packages.cmake)
