# One folder, one target: how every library, program and test of the project is declared.
#
#   orrery_library(NAME FOLDER path SOURCES ... [HEADERS ...] [LINKS ...] [PRIVATE_LINKS ...] [CORE])
#     sources and headers in that folder
#   orrery_program(NAME SOURCES ... [LINKS ...])
#   orrery_test(NAME LABEL unit|process|gl|window SOURCES ... [LINKS ...])

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# moc 6.4 fails on GCC's <concepts>: it is told that it has read that header already.
set(CMAKE_AUTOMOC_MOC_OPTIONS -D_GLIBCXX_CONCEPTS)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# The Dev build is optimised with assertions on. No cache entry: project() has already made an empty one of that name.
set(CMAKE_CXX_FLAGS_DEV "-O2 -g1")
set(CMAKE_EXE_LINKER_FLAGS_DEV "" CACHE STRING "")
set(CMAKE_SHARED_LINKER_FLAGS_DEV "" CACHE STRING "")
set(ORRERY_SANITIZE "" CACHE STRING "Sanitizers, for example address,undefined")

add_library(orrery_flags INTERFACE)
# The engine counts in single precision in the order written, so nothing may fuse or reorder the arithmetic.
target_compile_options(orrery_flags INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wpedantic -Werror -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlaps that are none where texts are joined (its bug 105651).
  target_compile_options(orrery_flags INTERFACE -Wno-restrict)
endif()
if(ORRERY_SANITIZE)
  set(CMAKE_CXX_FLAGS_DEV "-O1 -g1") # a test's table of cases takes the optimiser minutes under sanitizers
  target_compile_options(orrery_flags INTERFACE -fsanitize=${ORRERY_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  target_link_options(orrery_flags INTERFACE -fsanitize=${ORRERY_SANITIZE})
endif()

if(ORRERY_FUZZ)
  # Every library counts where it has been: without its counters the fuzzer is blind to it.
  target_compile_options(orrery_flags INTERFACE -fsanitize=fuzzer-no-link)
  target_link_options(orrery_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# Libraries are declared from the bottom up, and one may link those that are there already. So no arrow climbs, and none
# goes round.
function(orrery_refuse_climbing NAME)
  foreach(link IN LISTS ARGN)
    if(link MATCHES "^orrery::" AND NOT TARGET ${link})
      message(FATAL_ERROR "${NAME} links ${link}, which is not below it: libraries are declared from the bottom up.")
    endif()
  endforeach()
endfunction()

# A target sees the headers of the targets it links and no others: each gets an include directory of its own that
# holds a link to every header of its folder, or to HEADERS where targets share one, under the folder's path in the tree.
function(orrery_library NAME)
  cmake_parse_arguments(ARG "CORE" "FOLDER" "HEADERS;SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  orrery_refuse_climbing(${NAME} ${ARG_LINKS} ${ARG_PRIVATE_LINKS})
  set(view ${CMAKE_BINARY_DIR}/views/${NAME})
  file(MAKE_DIRECTORY ${view}/${ARG_FOLDER})
  if(ARG_HEADERS)
    list(TRANSFORM ARG_HEADERS PREPEND ${CMAKE_SOURCE_DIR}/${ARG_FOLDER}/ OUTPUT_VARIABLE headers)
  else()
    file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${ARG_FOLDER}/*.h)
  endif()
  set(viewed)
  foreach(header IN LISTS headers)
    cmake_path(GET header FILENAME file)
    file(CREATE_LINK ${header} ${view}/${ARG_FOLDER}/${file} SYMBOLIC)
    list(APPEND viewed ${view}/${ARG_FOLDER}/${file})
  endforeach()
  list(TRANSFORM ARG_SOURCES PREPEND ${CMAKE_SOURCE_DIR}/${ARG_FOLDER}/)
  if(ARG_SOURCES)
    add_library(orrery_${NAME} STATIC ${ARG_SOURCES})
    target_include_directories(orrery_${NAME} PUBLIC ${view})
    target_link_libraries(orrery_${NAME} PUBLIC ${ARG_LINKS} PRIVATE orrery_flags ${ARG_PRIVATE_LINKS})
    if(ARG_CORE)
      # The core calls functions that platform/native implements, whose headers it does not see.
      if(NOT NAME MATCHES "^platform")
        target_link_libraries(orrery_${NAME} INTERFACE $<LINK_ONLY:orrery_platform_native>)
      endif()
      # The core draws nothing: with their include guards set, the GL headers are empty there and any use fails.
      target_compile_definitions(orrery_${NAME} PRIVATE __gl_h_ __GL_H__ __glu_h__ __GLU_H__ __egl_h_)
    endif()
  else()
    add_library(orrery_${NAME} INTERFACE)
    target_include_directories(orrery_${NAME} INTERFACE ${view})
    target_link_libraries(orrery_${NAME} INTERFACE ${ARG_LINKS})
  endif()
  add_library(orrery::${NAME} ALIAS orrery_${NAME})
  # Every header compiles alone, with what its target links: target check-headers.
  target_sources(orrery_${NAME} INTERFACE FILE_SET HEADERS BASE_DIRS ${view} FILES ${viewed})
  set_target_properties(orrery_${NAME} PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
endfunction()

function(orrery_program NAME)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${NAME} ${ARG_SOURCES})
  target_link_libraries(${NAME} PRIVATE ${ARG_LINKS} orrery_flags)
endfunction()

function(orrery_test NAME)
  cmake_parse_arguments(ARG "" "LABEL" "SOURCES;LINKS" ${ARGN})
  find_package(GTest REQUIRED)
  include(GoogleTest)
  add_executable(${NAME} ${ARG_SOURCES})
  target_include_directories(${NAME} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${NAME} PRIVATE ORRERY_SAMPLES="${CMAKE_SOURCE_DIR}/samples"
    ORRERY_BIN="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  target_link_libraries(${NAME} PRIVATE ${ARG_LINKS} GTest::gmock GTest::gtest_main orrery_flags)
  gtest_discover_tests(${NAME} DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 300)
endfunction()
