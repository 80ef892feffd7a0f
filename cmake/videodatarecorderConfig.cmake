# videodatarecorder::videodatarecorder, the library and its interface; with the component "host" also
# videodatarecorder::host, the means to steer the stand-ins for the device.
include(${CMAKE_CURRENT_LIST_DIR}/videodatarecorderTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/videodatarecorderHostTargets.cmake OPTIONAL
  RESULT_VARIABLE videodatarecorder_host_FOUND)
foreach(component IN LISTS videodatarecorder_FIND_COMPONENTS)
  if(NOT videodatarecorder_${component}_FOUND AND videodatarecorder_FIND_REQUIRED_${component})
    set(videodatarecorder_FOUND FALSE)
    set(videodatarecorder_NOT_FOUND_MESSAGE "The component ${component} is not installed.")
  endif()
endforeach()
