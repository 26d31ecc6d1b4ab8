# The maker's hosts. `.example` is reserved: until a build names real ones, nothing is reached.

set(LUMACHECK_WEB_HOST www.quorvane.example CACHE STRING "Host of the maker's web site, which pages are opened on")
set(LUMACHECK_SUPPORT_HOST support.quorvane.example CACHE STRING "Host of the maker's support pages")
set(LUMACHECK_ANALYTICS_HOST analytics.quorvane.example CACHE STRING
  "Host, and port if need be, that usage events are sent to over HTTPS")

configure_file(${CMAKE_CURRENT_LIST_DIR}/MakerHosts.h.in ${PROJECT_BINARY_DIR}/generated/SharedFiles/MakerHosts.h @ONLY)

# maker_hosts: lets a target include "SharedFiles/MakerHosts.h".
add_library(maker_hosts INTERFACE)
target_include_directories(maker_hosts INTERFACE ${PROJECT_BINARY_DIR}/generated)
