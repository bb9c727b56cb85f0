# Compiles the Java classes and packs them with the native library.
file(GLOB_RECURSE generated ${OUT}/java/*.java)
file(GLOB_RECURSE written ${SOURCES}/*.java)
file(REMOVE_RECURSE ${TREE})
file(MAKE_DIRECTORY ${TREE}/${MAVEN})
file(MAKE_DIRECTORY ${TREE}/info/quenta/vorl/native)
file(COPY ${OUT}/pom.xml ${OUT}/pom.properties DESTINATION ${TREE}/${MAVEN})

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE code)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGV0} failed")
  endif()
endfunction()

# Generated code is full of finalizers, which are out of use but still work.
run(${JAVAC} --release 17 -nowarn -d ${TREE} -sourcepath ${SOURCES}
    ${generated})
run(${JAVAC} --release 17 -Xlint:all -Werror -cp ${TREE} -d ${TREE} ${written})

get_filename_component(name ${LIBRARY} NAME)
set(packed ${TREE}/info/quenta/vorl/native/${name})
file(COPY_FILE ${LIBRARY} ${packed})
run(${STRIP} --strip-unneeded ${packed})
# The loader keeps the unpacked library in a folder of this name.
file(SHA256 ${packed} hash)
file(WRITE ${packed}.sha256 ${hash})

run(${JAR_TOOL} --create --file ${JAR}.new --no-compress --date=2020-01-01T00:00:00Z -C ${TREE} .)
file(RENAME ${JAR}.new ${JAR})
