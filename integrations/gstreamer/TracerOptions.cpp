#include "integrations/gstreamer/TracerOptions.h"

#include <gst/gst.h>

#include <cstdlib>
#include <cstring>

#include "integrations/gstreamer/debugCategory.h"

namespace vdrgst {
namespace {

std::string absolutePath(const char* path) {
    gchar* const absolute = g_canonicalize_filename(path, nullptr);
    std::string result(absolute);
    g_free(absolute);
    return result;
}

gboolean take(GQuark field, const GValue* value, gpointer data) {
    auto& options = *static_cast<TracerOptions*>(data);
    const char* const name = g_quark_to_string(field);
    if (std::strcmp(name, "root") == 0 && G_VALUE_HOLDS_STRING(value)) {
        options.root = absolutePath(g_value_get_string(value));
    } else if (std::strcmp(name, "binary") == 0 && G_VALUE_HOLDS_BOOLEAN(value)) {
        options.binary = g_value_get_boolean(value) != FALSE;
    } else if (std::strcmp(name, "level") == 0 && G_VALUE_HOLDS_INT(value)) {
        options.level = g_value_get_int(value);
    } else {
        GST_WARNING(
                "parameter %s is unknown or of another type: root=FOLDER, binary=BOOLEAN and "
                "level=1 or 2 are known",
                name);
    }
    return TRUE;
}

}  // namespace

TracerOptions TracerOptions::parse(const char* text) {
    TracerOptions options;
    const char* const folder = std::getenv("VDR_ROOT");
    options.root = absolutePath(folder != nullptr && folder[0] != '\0' ? folder : "vdr");
    if (text == nullptr || text[0] == '\0') {
        return options;
    }
    const std::string description = std::string("vdr,") + text;
    GstStructure* const structure = gst_structure_from_string(description.c_str(), nullptr);
    if (structure == nullptr) {
        GST_WARNING("cannot read the parameters (%s)", text);
        return options;
    }
    gst_structure_foreach(structure, take, &options);
    gst_structure_free(structure);
    return options;
}

}  // namespace vdrgst
