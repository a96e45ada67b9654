# One library target per source folder: every .cpp/.h/.ui/.qrc in the folder belongs to it,
# so adding a file never means editing a list. SUBDIRS names sub-folders that belong to the same
# library; a sub-folder with a CMakeLists.txt of its own is a library of its own. Only src/ is an
# include root, so every include names its folder ("gallery/CGalleryManifest.h"). DEPS are what
# the library's headers need as well; PRIVATE_DEPS are used by its .cpp files only.
function(curatool_library name)
  cmake_parse_arguments(ARG "" "" "DEPS;PRIVATE_DEPS;EXCLUDE;SUBDIRS" ${ARGN})
  set(patterns)
  foreach(dir IN ITEMS . ${ARG_SUBDIRS})
    foreach(ext IN ITEMS cpp h ui qrc)
      list(APPEND patterns ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.${ext})
    endforeach()
  endforeach()
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})
  foreach(excluded IN LISTS ARG_EXCLUDE)
    list(REMOVE_ITEM sources ${CMAKE_CURRENT_SOURCE_DIR}/${excluded})
  endforeach()
  if(NOT sources)
    # A folder whose code has not been written yet still gives a linkable target.
    set(stub ${CMAKE_CURRENT_BINARY_DIR}/${name}_empty.cpp)
    file(WRITE ${stub} "")
    set(sources ${stub})
  endif()
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS} curatool_build_options curatool_qt_strings)
endfunction()

# One GoogleTest executable per test folder, each test run as its own CTest case. WIDGETS gives
# it a QApplication (and QtWidgets); the others run on a QCoreApplication.
function(curatool_test folder)
  cmake_parse_arguments(ARG "WIDGETS" "" "DEPS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  set(target test_${folder})
  add_executable(${target} ${sources})
  target_link_libraries(${target} PRIVATE curatool_build_options)
  if(ARG_WIDGETS)
    target_link_libraries(${target} PRIVATE test_main_widgets ${ARG_DEPS})
  else()
    target_link_libraries(${target} PRIVATE test_main ${ARG_DEPS})
  endif()
  target_compile_definitions(${target} PRIVATE
      CURATOOL_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
      CURATOOL_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}/${folder}/data")
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${folder})
endfunction()
