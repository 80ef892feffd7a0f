#include "platform/Properties.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>
#include <sstream>
#include <string>

#include "platform/host/PropertyControl.h"

namespace {

// key=value,key=value; what has no equals sign is passed over.
std::map<std::string, std::string> propertiesOf(const char* text) {
    std::map<std::string, std::string> properties;
    std::istringstream pairs(text != nullptr ? text : "");
    for (std::string pair; std::getline(pairs, pair, ',');) {
        if (const size_t equals = pair.find('='); equals != std::string::npos) {
            properties[pair.substr(0, equals)] = pair.substr(equals + 1);
        }
    }
    return properties;
}

struct PropertyStore {
    PropertyStore() : values(propertiesOf(std::getenv("VDR_PROPERTIES"))) {}

    std::mutex mutex;
    std::map<std::string, std::string> values;
};

// Never destroyed: the library reads properties whenever a camera session opens.
PropertyStore& store() {
    static auto* instance = new PropertyStore;
    return *instance;
}

std::string valueOf(const char* key) {
    const std::lock_guard guard(store().mutex);
    const auto found = store().values.find(key);
    return found != store().values.end() ? found->second : std::string();
}

}  // namespace

void zk::host::setProperty(const std::string& key, const std::string& value) {
    const std::lock_guard guard(store().mutex);
    store().values[key] = value;
}

void zk::host::clearProperties() {
    const std::lock_guard guard(store().mutex);
    store().values.clear();
}

extern "C" int property_get(const char* key, char* value, const char* defaultValue) {
    std::string text = valueOf(key);
    if (text.empty() && defaultValue != nullptr) {
        text = defaultValue;
    }
    text.resize(std::min<size_t>(text.size(), zk::kPropertyValueMax - 1));
    std::memcpy(value, text.c_str(), text.size() + 1);
    return static_cast<int>(text.size());
}

extern "C" int32_t property_get_int32(const char* key, int32_t defaultValue) {
    const std::string text = valueOf(key);
    if (text.empty()) {
        return defaultValue;
    }
    char* end = nullptr;
    errno = 0;
    const long long number = std::strtoll(text.c_str(), &end, 0);
    if (errno != 0 || *end != '\0' || number < std::numeric_limits<int32_t>::min() ||
        number > std::numeric_limits<int32_t>::max()) {
        return defaultValue;
    }
    return static_cast<int32_t>(number);
}
