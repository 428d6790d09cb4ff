# Brings each translation file up to date with the texts in SOURCE_DIR:
# lupdate works on a copy in WORK_DIR, and the file in the source tree is
# replaced only when something changed, so an unchanged tree rebuilds nothing.
#   cmake -DLUPDATE=... -DSOURCE_DIR=... -DTS_FILES=a.ts;b.ts -DWORK_DIR=... -DSTAMP=... -P update.cmake
file(MAKE_DIRECTORY ${WORK_DIR})
foreach(ts IN LISTS TS_FILES)
  get_filename_component(name ${ts} NAME)
  set(copy ${WORK_DIR}/${name})
  file(COPY_FILE ${ts} ${copy})
  execute_process(
    COMMAND ${LUPDATE} -silent -no-obsolete -locations none ${SOURCE_DIR} -ts ${copy}
    RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "lupdate failed for ${ts}")
  endif()
  file(COPY_FILE ${copy} ${ts} ONLY_IF_DIFFERENT)
endforeach()
file(TOUCH ${STAMP})
