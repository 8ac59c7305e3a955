# Finds ICU and defines the target vomsg_icu. The 32-bit build uses the headers of the native package and the
# runtime libraries of the foreign architecture, which carry no unversioned name.
add_library(vomsg_icu INTERFACE)
if(VOMSG_32BIT)
  file(GLOB VOMSG_ICUUC32 /usr/lib/i386-linux-gnu/libicuuc.so.[0-9][0-9] /lib/i386-linux-gnu/libicuuc.so.[0-9][0-9])
  file(GLOB VOMSG_ICUDATA32 /usr/lib/i386-linux-gnu/libicudata.so.[0-9][0-9]
       /lib/i386-linux-gnu/libicudata.so.[0-9][0-9])
  if(NOT VOMSG_ICUUC32 OR NOT VOMSG_ICUDATA32)
    message(FATAL_ERROR "The 32-bit runtime of ICU is missing (package libicu72:i386).")
  endif()
  list(GET VOMSG_ICUUC32 0 VOMSG_ICUUC32)
  list(GET VOMSG_ICUDATA32 0 VOMSG_ICUDATA32)
  target_link_libraries(vomsg_icu INTERFACE ${VOMSG_ICUUC32} ${VOMSG_ICUDATA32})
else()
  find_package(ICU REQUIRED COMPONENTS uc data)
  target_link_libraries(vomsg_icu INTERFACE ICU::uc ICU::data)
endif()
