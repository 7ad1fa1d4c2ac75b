# zb_subsystem(NAME DEPS...) builds src/NAME/*.cpp into the static library zb_NAME.
# Sources are globbed so that adding a class pair needs no edit here.
function(zb_subsystem name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
  if(sources)
    add_library(zb_${name} STATIC ${sources})
    target_include_directories(zb_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(zb_${name} PUBLIC ${ARGN})
  else()
    add_library(zb_${name} INTERFACE)
    target_include_directories(zb_${name} INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
    target_link_libraries(zb_${name} INTERFACE ${ARGN})
  endif()
endfunction()

# zb_test(NAME LIBS...) builds tests/NAME/*.cpp into one gtest binary and registers its cases.
function(zb_test name)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(test_${name} ${sources})
  target_link_libraries(test_${name} PRIVATE ${ARGN} zb_test_support GTest::gmock_main)
  zb_register_gtest(test_${name} "ZB_TEST_DATA_DIR=${PROJECT_SOURCE_DIR}/tests/data")
endfunction()

# zb_register_gtest(TARGET [ENVIRONMENT...]) registers a gtest binary with CTest: each case as a
# test of its own, or, in a cross build whose tests run under an emulator, the whole binary as
# one test, since the emulator's start-up then outweighs most cases.
function(zb_register_gtest target)
  set(environment ${ARGN})
  if(CMAKE_CROSSCOMPILING_EMULATOR)
    add_test(NAME ${target} COMMAND ${target})
    if(environment)
      set_tests_properties(${target} PROPERTIES ENVIRONMENT "${environment}")
    endif()
  elseif(environment)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST PROPERTIES ENVIRONMENT "${environment}")
  else()
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST)
  endif()
endfunction()
