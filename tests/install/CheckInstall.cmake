# Installs the build into a scratch prefix, then builds and runs a small application
# against it twice: once through the CMake package, once through pkg-config.
# Expects BUILD_DIR, SOURCE_DIR and WORK_DIR.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/consumer" -B "${WORK_DIR}/consumer" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/consumer")
file(MAKE_DIRECTORY "${WORK_DIR}/db")
run("${WORK_DIR}/consumer/consumer" "${WORK_DIR}/db/")
if(NOT last_output MATCHES "consumer 1 pairs")
  message(FATAL_ERROR "unexpected output: ${last_output}")
endif()

file(GLOB_RECURSE pc_file "${prefix}/*/qvb.pc")
get_filename_component(pc_dir "${pc_file}" DIRECTORY)
set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
run(pkg-config --cflags --libs qvb)
string(STRIP "${last_output}" flags)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ -std=c++17 "${SOURCE_DIR}/consumer/main.cpp" ${flags} "-Wl,-rpath,${pc_dir}/.."
    -o "${WORK_DIR}/pc-consumer")
file(REMOVE_RECURSE "${WORK_DIR}/db")
file(MAKE_DIRECTORY "${WORK_DIR}/db")
run("${WORK_DIR}/pc-consumer" "${WORK_DIR}/db/")
