# glmix_library(NAME DIRS dir... [DEPS target...] [PRIVATE_DEPS target...] [EXCLUDE regex])
# A static library made of every .cpp below the given source folders.
# New files are picked up on the next build without editing a list.
function(glmix_library name)
  cmake_parse_arguments(ARG "" "EXCLUDE" "DIRS;DEPS;PRIVATE_DEPS" ${ARGN})
  set(sources)
  foreach(dir IN LISTS ARG_DIRS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${dir}/*.cpp")
    list(APPEND sources ${found})
  endforeach()
  if(ARG_EXCLUDE)
    list(FILTER sources EXCLUDE REGEX "${ARG_EXCLUDE}")
  endif()
  if(NOT sources)
    # A library whose folders hold no implementation yet still links.
    set(placeholder "${CMAKE_BINARY_DIR}/placeholder_${name}.cpp")
    file(WRITE "${placeholder}" "// no sources yet\n")
    list(APPEND sources "${placeholder}")
  endif()
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} PUBLIC "${CMAKE_SOURCE_DIR}/src")
  target_link_libraries(${name} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
  target_compile_definitions(${name} PUBLIC GLMIX_RESOURCE_DIR="${GLMIX_RESOURCE_DIR}"
                                                GLMIX_VERSION="${PROJECT_VERSION}")
endfunction()

# glmix_test(NAME DIR LIBS lib... [SHARED file...])
# One GoogleTest executable of every .cpp below tests/DIR, registered with CTest.
# SHARED names test helpers of other folders (paths below tests/) that the
# executable compiles too.
function(glmix_test name dir)
  cmake_parse_arguments(ARG "" "" "LIBS;SHARED" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/tests/${dir}/*.cpp")
  if(NOT sources)
    # A folder without tests yet (or not there yet) has no target; the glob
    # is checked again at every build, so its first test makes one.
    return()
  endif()
  foreach(shared IN LISTS ARG_SHARED)
    list(APPEND sources "${CMAKE_SOURCE_DIR}/tests/${shared}")
  endforeach()
  add_executable(${name} ${sources})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}/tests")
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    GLMIX_TEST_DATA_DIR="${CMAKE_SOURCE_DIR}/tests/data"
    GLMIX_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  gtest_discover_tests(${name} WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}" DISCOVERY_TIMEOUT 60)
endfunction()
