# Installs the built library into a private prefix, then configures, builds and runs a
# consumer project against it: once through find_package(Nox) and once through nox.pc.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  message(STATUS "${out}")
endfunction()

run(${CMAKE_COMMAND} --install ${NOX_BINARY_DIR} --prefix ${prefix})
foreach(file include/nox/Nox.h include/nox/NoxInterval.h)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "the install lacks ${file}")
  endif()
endforeach()
file(GLOB_RECURSE pc_files ${prefix}/*/nox.pc)
if(NOT pc_files)
  message(FATAL_ERROR "the install lacks nox.pc")
endif()
list(GET pc_files 0 pc_file)
get_filename_component(pc_dir ${pc_file} DIRECTORY)

run(${CMAKE_COMMAND} -S ${CONSUMER_SOURCE_DIR} -B ${WORK_DIR}/build
    -DCMAKE_CXX_COMPILER=${CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
    -DNOX_PKG_CONFIG_DIR=${pc_dir})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer_cmake)
run(${WORK_DIR}/build/consumer_pkgconfig)
