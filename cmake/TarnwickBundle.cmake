# What a bundle tells its programs: the version, and where newer ones come from. packaging/bundle puts it in.
set(TARNWICK_FEED_ADDRESS "" CACHE STRING "Where the feed of newer bundles is, https://...; empty: they do not update themselves")
set(TARNWICK_PUBLIC_KEYS "" CACHE STRING "The keys, as minisign writes them, one of which has signed the feed; a list")
set(TARNWICK_CHECK_INTERVAL 86400 CACHE STRING "Seconds between two looks at the feed")

include(${CMAKE_CURRENT_LIST_DIR}/TarnwickUpdateSource.cmake)

set(information "{}")
string(JSON information SET "${information}" version "\"${PROJECT_VERSION}\"")
string(JSON information SET "${information}" channel "\"stable\"")
if(NOT TARNWICK_FEED_ADDRESS STREQUAL "")
    list(JOIN TARNWICK_PUBLIC_KEYS "\", \"" keys)
    string(JSON information SET "${information}" feedAddress "\"${TARNWICK_FEED_ADDRESS}\"")
    string(JSON information SET "${information}" publicKeys "[\"${keys}\"]")
    string(JSON information SET "${information}" checkInterval "${TARNWICK_CHECK_INTERVAL}")
endif()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/Information.json CONTENT "${information}\n" @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/Information.json DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
