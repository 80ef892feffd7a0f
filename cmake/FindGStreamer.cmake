# GStreamer's core, as GStreamer::GStreamer. Not by its own pkg-config file: that asks for libunwind's,
# and Debian's libunwind-14-dev, which comes with clang's C++ library, stands in for it without one.
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(GStreamer_GOBJECT QUIET IMPORTED_TARGET GLOBAL gobject-2.0)
endif()
find_path(GStreamer_INCLUDE_DIR gst/gst.h PATH_SUFFIXES gstreamer-1.0)
find_library(GStreamer_LIBRARY gstreamer-1.0)
if(GStreamer_INCLUDE_DIR)
  file(STRINGS ${GStreamer_INCLUDE_DIR}/gst/gstversion.h GStreamer_VERSION_LINES
    REGEX "^#define GST_VERSION_(MAJOR|MINOR|MICRO) ")
  string(REGEX MATCHALL "[0-9]+" GStreamer_VERSION "${GStreamer_VERSION_LINES}")
  list(JOIN GStreamer_VERSION "." GStreamer_VERSION)
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(GStreamer
  REQUIRED_VARS GStreamer_LIBRARY GStreamer_INCLUDE_DIR GStreamer_GOBJECT_FOUND
  VERSION_VAR GStreamer_VERSION)
mark_as_advanced(GStreamer_INCLUDE_DIR GStreamer_LIBRARY)
if(GStreamer_FOUND AND NOT TARGET GStreamer::GStreamer)
  add_library(GStreamer::GStreamer UNKNOWN IMPORTED GLOBAL)
  set_target_properties(GStreamer::GStreamer PROPERTIES
    IMPORTED_LOCATION ${GStreamer_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${GStreamer_INCLUDE_DIR}
    INTERFACE_LINK_LIBRARIES PkgConfig::GStreamer_GOBJECT)
endif()
