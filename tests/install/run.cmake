# The steps of the install test; CMakeLists.txt passes the variables.

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code)
  if(NOT code EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed with ${code}: ${command}")
  endif()
endfunction()

file(REMOVE_RECURSE ${FOLDER})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${FOLDER}/prefix)
run(${CMAKE_COMMAND} -S ${CONSUMER} -B ${FOLDER}/build -G ${GENERATOR}
    -D CMAKE_CXX_COMPILER=${COMPILER}
    -D CMAKE_PREFIX_PATH=${FOLDER}/prefix
    -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF
    -D VERSION=${VERSION})
run(${CMAKE_COMMAND} --build ${FOLDER}/build)
run(${FOLDER}/build/consumer)
