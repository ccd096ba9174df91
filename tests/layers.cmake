# The tests that CTest runs in a build folder. Tests that bind the fixed ports run in a private network. Tests with the
# label "all" run only with ./test.sh --all.

# Without private networks, the tests use the machine's own ports, one test at a time.
set(PORTS_LOCK "" CACHE INTERNAL "")
if(NOT CMAKE_HOST_WIN32)
  execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/in_private_network.sh --only-private true
      OUTPUT_QUIET RESULT_VARIABLE REFUSED)
  if(NOT REFUSED EQUAL 0)
    set(PORTS_LOCK udp_161_and_162 CACHE INTERNAL "")
  endif()
endif()

# add_network_test(NAME SECONDS COMMAND...): a test that binds the ports, with a timeout.
function(add_network_test name seconds)
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${seconds} RESOURCE_LOCK "${PORTS_LOCK}")
endfunction()

set(UNDER_WINE ${CMAKE_SOURCE_DIR}/scripts/run_under_wine.sh CACHE INTERNAL "")
set(IN_PRIVATE_NETWORK ${CMAKE_SOURCE_DIR}/scripts/in_private_network.sh)
set(ON_PRIVATE_DESKTOP ${CMAKE_SOURCE_DIR}/scripts/run_on_private_desktop.sh)
# Temporary files are not in /tmp: in a private network every user is root, and pytest refuses the folder of another one.
set(PYTEST ${CMAKE_COMMAND} -E env PYTEST_DEBUG_TEMPROOT=${CMAKE_CURRENT_BINARY_DIR} /usr/bin/python3 -B -m pytest -q)

function(add_layers)
  if(WIN32)
    set(build windows)
    set(runner)
    set(desktop)
    if(NOT CMAKE_HOST_WIN32)
      set(runner ${UNDER_WINE})
      set(desktop ${ON_PRIVATE_DESKTOP} wine)
    endif()
    set(programs unit receiver_steps socket_calls failure)
    # It creates windows, so Wine needs a display.
    add_network_test(windows.memory 300 ${desktop} $<TARGET_FILE:quillmont_memory_tests>)
    if(NOT CMAKE_HOST_WIN32)
      # A second compiler must accept the same sources without a warning.
      add_test(NAME windows.clang
          COMMAND ${CMAKE_SOURCE_DIR}/scripts/build.sh clang all tests/kit/all tests/packages/all)
      set_tests_properties(windows.clang PROPERTIES TIMEOUT 1800 PROCESSORS 2 LABELS all)
    endif()
  elseif(QUILLMONT_SANITIZERS STREQUAL "thread")
    set(build tsan)
    set(runner ${IN_PRIVATE_NETWORK})
    set(programs failure)
  else()
    set(build native)
    set(runner ${IN_PRIVATE_NETWORK})
    set(programs receiver_steps failure)
    foreach(program unit memory)
      add_test(NAME native.${program} COMMAND quillmont_${program}_tests)
      set_tests_properties(native.${program} PROPERTIES TIMEOUT 300)
    endforeach()
    foreach(check documents guide)
      add_test(NAME docs.${check} COMMAND /usr/bin/python3 -B ${CMAKE_SOURCE_DIR}/tests/docs/check_${check}.py)
    endforeach()
    add_test(NAME style.includes COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh includes)
    add_test(NAME style.format COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh format)
    add_test(NAME style.tidy COMMAND ${CMAKE_SOURCE_DIR}/scripts/check_style.sh tidy ${CMAKE_BINARY_DIR})
    set_tests_properties(style.format PROPERTIES SKIP_RETURN_CODE 77 LABELS all)
    set_tests_properties(style.tidy PROPERTIES TIMEOUT 1800 LABELS all)
  endif()
  foreach(program ${programs})
    add_network_test(${build}.${program} 300 ${runner} $<TARGET_FILE:quillmont_${program}_tests>)
  endforeach()

  set(engine ${runner} $<TARGET_FILE:quillmont_engine_tests>)
  if(NOT CMAKE_HOST_WIN32)
    # The slow lines are part of the private network, so it is created first and Wine's runner starts inside it.
    set(inside)
    if(WIN32)
      set(inside ${runner} --inside)
    endif()
    set(engine ${IN_PRIVATE_NETWORK} ${CMAKE_SOURCE_DIR}/scripts/with_slow_lines.sh
        ${inside} $<TARGET_FILE:quillmont_engine_tests>)
  endif()
  add_network_test(${build}.engine 600 ${engine})
endfunction()
