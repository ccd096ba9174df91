# What CTest runs from this build folder. Whatever binds the fixed ports does so in a network of its own.
include(GoogleTest)

if(WIN32)
  set(BUILD windows)
  set(RUNNER)
  if(NOT CMAKE_HOST_WIN32)
    set(RUNNER ${CMAKE_SOURCE_DIR}/scripts/run_under_wine.sh)
  endif()
  set(ENGINE_RUNNER ${RUNNER})
  add_test(NAME windows.unit COMMAND ${RUNNER} $<TARGET_FILE:quillmont_unit_tests>)
  add_test(NAME windows.memory COMMAND ${RUNNER} $<TARGET_FILE:quillmont_memory_tests>)
  add_test(NAME windows.broken_walk COMMAND ${RUNNER} $<TARGET_FILE:quillmont_broken_walk_tests>)
  add_test(NAME windows.file_layer COMMAND ${RUNNER} $<TARGET_FILE:quillmont_file_layer_tests>)
  add_test(NAME windows.receiver_steps COMMAND ${RUNNER} $<TARGET_FILE:quillmont_receiver_steps_tests>)
  add_test(NAME windows.broken_search COMMAND ${RUNNER} $<TARGET_FILE:quillmont_broken_search_tests>)
  add_test(NAME windows.attributes COMMAND ${RUNNER} $<TARGET_FILE:quillmont_attribute_tests>)
  add_test(NAME windows.file_transfer COMMAND ${RUNNER} $<TARGET_FILE:quillmont_file_transfer_tests>)
  add_test(NAME windows.socket_calls COMMAND ${RUNNER} $<TARGET_FILE:quillmont_socket_calls_tests>)
  add_test(NAME windows.thread_calls COMMAND ${RUNNER} $<TARGET_FILE:quillmont_thread_calls_tests>)
  # These make windows, for which Wine wants a display.
  if(CMAKE_HOST_WIN32)
    add_test(NAME windows.window_memory COMMAND quillmont_window_memory_tests)
  else()
    add_test(NAME windows.window_memory
        COMMAND ${CMAKE_SOURCE_DIR}/scripts/run_on_private_desktop.sh wine $<TARGET_FILE:quillmont_window_memory_tests>)
  endif()
  add_test(NAME windows.start_up COMMAND ${RUNNER} $<TARGET_FILE:quillmont_start_up_tests>)
  set_tests_properties(
      windows.unit windows.memory windows.broken_walk windows.file_layer windows.receiver_steps
      windows.broken_search windows.attributes windows.file_transfer windows.socket_calls
      windows.thread_calls windows.start_up windows.window_memory PROPERTIES TIMEOUT 300)
  if(NOT CMAKE_HOST_WIN32)
    add_test(NAME windows.second_compiler
        COMMAND /usr/bin/python3 -B ${CMAKE_SOURCE_DIR}/scripts/check_second_compiler.py ${CMAKE_BINARY_DIR})
    set_tests_properties(windows.second_compiler PROPERTIES TIMEOUT 1800 SKIP_RETURN_CODE 77)
  endif()
elseif(QUILLMONT_SANITIZERS STREQUAL "thread")
  set(BUILD tsan)
  set(ENGINE_RUNNER ${CMAKE_SOURCE_DIR}/scripts/in_private_network.sh)
else()
  set(BUILD native)
  set(ENGINE_RUNNER ${CMAKE_SOURCE_DIR}/scripts/in_private_network.sh)
  foreach(program unit memory broken_walk file_layer receiver_steps broken_search)
    # A busy machine may take longer than five seconds to start a program that lists its tests.
    gtest_discover_tests(quillmont_${program}_tests
        TEST_PREFIX ${program}. DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 60)
  endforeach()
  foreach(check documents guide)
    add_test(NAME docs.${check}
        COMMAND /usr/bin/python3 -B ${CMAKE_SOURCE_DIR}/tests/docs/check_${check}.py)
  endforeach()
  add_test(NAME style.format COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh format)
  set_tests_properties(style.format PROPERTIES SKIP_RETURN_CODE 77)
  add_test(NAME style.arrows COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh arrows)
  add_test(NAME style.tidy COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh tidy ${CMAKE_BINARY_DIR})
  set_tests_properties(style.tidy PROPERTIES TIMEOUT 1800)
endif()

foreach(layer ${ENGINE_LAYERS})
  add_test(NAME ${BUILD}.${layer} COMMAND ${ENGINE_RUNNER} $<TARGET_FILE:quillmont_${layer}_tests>)
  set_tests_properties(${BUILD}.${layer} PROPERTIES TIMEOUT 300)
endforeach()
if(NOT CMAKE_HOST_WIN32)
  # The lines belong to the network, so the network comes first and the runner finds itself inside it.
  set(SLOW_LINE_RUNNER)
  if(WIN32)
    set(SLOW_LINE_RUNNER ${RUNNER} --inside)
  endif()
  add_test(NAME ${BUILD}.slow_line
      COMMAND ${CMAKE_SOURCE_DIR}/scripts/in_private_network.sh ${CMAKE_SOURCE_DIR}/scripts/with_slow_lines.sh
          ${SLOW_LINE_RUNNER} $<TARGET_FILE:quillmont_slow_line_tests>)
  set_tests_properties(${BUILD}.slow_line PROPERTIES TIMEOUT 300)
endif()
