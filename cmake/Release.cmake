# The releases as packaging/changelog tells them, which is the one place that names them:
#   LUMACHECK_RELEASE_VERSION, LUMACHECK_RELEASE_DATE   the newest one's, the date as in 2026-11-21
#   LUMACHECK_RELEASE_EPOCH                             that date in seconds since 1970
#   LUMACHECK_RELEASE_ELEMENTS                          all of them, as AppStream lists releases
set(LUMACHECK_CHANGELOG ${CMAKE_CURRENT_LIST_DIR}/../packaging/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${LUMACHECK_CHANGELOG})

file(STRINGS ${LUMACHECK_CHANGELOG} lines)
set(months Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
set(LUMACHECK_RELEASE_ELEMENTS "")
unset(LUMACHECK_RELEASE_VERSION)
foreach(line IN LISTS lines)
  if(line MATCHES "^lumacheck \\(([0-9.]+)\\)")
    set(version ${CMAKE_MATCH_1})
  elseif(line MATCHES "^ -- .*>  [A-Z][a-z][a-z], ([0-9]+) ([A-Z][a-z][a-z]) ([0-9]+) ")
    set(day ${CMAKE_MATCH_1})
    set(year ${CMAKE_MATCH_3})
    list(FIND months ${CMAKE_MATCH_2} month)
    math(EXPR month "${month} + 1")
    if(month LESS 10)
      set(month 0${month})
    endif()
    set(date ${year}-${month}-${day})
    if(NOT DEFINED LUMACHECK_RELEASE_VERSION)
      set(LUMACHECK_RELEASE_VERSION ${version})
      set(LUMACHECK_RELEASE_DATE ${date})
    endif()
    string(APPEND LUMACHECK_RELEASE_ELEMENTS "    <release version=\"${version}\" date=\"${date}\"/>\n")
  endif()
endforeach()
string(STRIP "${LUMACHECK_RELEASE_ELEMENTS}" LUMACHECK_RELEASE_ELEMENTS)
execute_process(COMMAND date -u -d ${LUMACHECK_RELEASE_DATE} +%s
  OUTPUT_VARIABLE LUMACHECK_RELEASE_EPOCH OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
