# Builds the stranger's project in WORK with vorl from FROM, and runs it:
# cmake -DFROM=find_package|pkg-config|FOLDER -DPREFIX=... -DWORK=... -DCOMPILER=... -DSOURCE=... -P run.cmake
#
# From a source folder the library is built as a shared one, installed, and found again there.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE failed OUTPUT_VARIABLE out ERROR_VARIABLE out)
  if(failed)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${out}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

# The programs of a document, as FOLDER/program_1.cpp and so on.
function(write_programs document folder)
  file(REMOVE_RECURSE ${folder})
  file(READ ${document} text)
  set(count 0)
  string(FIND "${text}" "```cpp\n" start)
  while(start GREATER -1)
    math(EXPR start "${start} + 7")
    string(SUBSTRING "${text}" ${start} -1 text)
    string(FIND "${text}" "```" end)
    string(SUBSTRING "${text}" 0 ${end} program)
    math(EXPR count "${count} + 1")
    file(WRITE ${folder}/program_${count}.cpp "${program}")
    string(FIND "${text}" "```cpp\n" start)
  endwhile()
endfunction()

function(expect_text document text)
  file(READ ${document} whole)
  string(FIND "${whole}" "${text}" position)
  if(position EQUAL -1)
    message(FATAL_ERROR "${document} doesn't hold\n${text}")
  endif()
endfunction()

function(build from prefix work)
  file(REMOVE_RECURSE ${work}/program)
  file(MAKE_DIRECTORY ${work}/out)
  file(GLOB_RECURSE pc ${prefix}/*/vorl.pc)
  cmake_path(GET pc PARENT_PATH pc_dir)
  set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
  write_programs(${SOURCE}/README.md ${work}/readme)
  run(${CMAKE_COMMAND} -G Ninja -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/program -DVORL_FROM=${from}
      -DREADME_PROGRAMS=${work}/readme -DCMAKE_PREFIX_PATH=${prefix}
      -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_BUILD_TYPE=Debug
      -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DCMAKE_INSTALL_PREFIX=${work}/prefix ${ARGN})
  run(${CMAKE_COMMAND} --build ${work}/program)
  run(${work}/program/main ${SOURCE}/data/karate.nse ${work}/out)

  # What examples print is told beside them; a trace on standard error isn't.
  file(READ ${SOURCE}/examples/cpp/communities.cpp code)
  expect_text(${SOURCE}/docs/cpp.md "${code}")
  run(${work}/program/communities)
  expect_text(${SOURCE}/docs/cpp.md "```\n${out}```")
  file(GLOB programs ${work}/readme/*.cpp)
  foreach(program IN LISTS programs)
    cmake_path(GET program STEM name)
    run(${work}/program/${name})
    expect_text(${SOURCE}/README.md "```\n${out}```")
  endforeach()
endfunction()

if(NOT IS_DIRECTORY "${FROM}")
  build(${FROM} ${PREFIX} ${WORK})
else()
  file(REMOVE_RECURSE ${WORK}/prefix)
  build(${FROM} ${WORK}/prefix ${WORK} -DBUILD_SHARED_LIBS=ON -DVORL_INSTALL=ON)
  run(${CMAKE_COMMAND} --install ${WORK}/program)
  build(find_package ${WORK}/prefix ${WORK})
  build(pkg-config ${WORK}/prefix ${WORK} -DCMAKE_BUILD_RPATH=${WORK}/prefix/lib)
endif()
