// Loaded before the system's own: shows a program those serial ports only that match VYR_TEST_PORTS, each as
// the USB port of an illuminator. So the program as it is shipped meets the simulated illuminator. A port
// whose device is gone is not shown, so it follows an unplugged cable by itself.

#include <cstdlib>
#include <glob.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

struct udev // NOLINT(readability-identifier-naming): the names are the system's
{
};

struct udev_list_entry // NOLINT(readability-identifier-naming)
{
    std::string path;
    udev_list_entry* next = nullptr;
};

struct udev_enumerate // NOLINT(readability-identifier-naming)
{
    std::vector<udev_list_entry> entries;
};

struct udev_device // NOLINT(readability-identifier-naming)
{
    std::string path;
    std::unique_ptr<udev_device> parent;
};

namespace {
bool isThere(const char* path)
{
    struct stat status = {};
    return ::stat(path, &status) == 0;
}

std::vector<udev_list_entry> portsThere()
{
    std::vector<udev_list_entry> entries;
    const char* pattern = std::getenv("VYR_TEST_PORTS");
    glob_t found = {};
    if (pattern && ::glob(pattern, 0, nullptr, &found) == 0) {
        for (std::size_t i = 0; i < found.gl_pathc; ++i) {
            if (isThere(found.gl_pathv[i])) {
                entries.push_back({found.gl_pathv[i]});
            }
        }
    }
    ::globfree(&found);
    for (std::size_t i = 1; i < entries.size(); ++i) {
        entries[i - 1].next = &entries[i];
    }
    return entries;
}
} // namespace

extern "C" {
udev* udev_new()
{
    return new udev;
}

udev* udev_unref(udev* context)
{
    delete context;
    return nullptr;
}

udev_enumerate* udev_enumerate_new(udev* /*context*/)
{
    return new udev_enumerate;
}

udev_enumerate* udev_enumerate_unref(udev_enumerate* search)
{
    delete search;
    return nullptr;
}

int udev_enumerate_add_match_subsystem(udev_enumerate* /*search*/, const char* /*subsystem*/)
{
    return 0;
}

int udev_enumerate_scan_devices(udev_enumerate* search)
{
    search->entries = portsThere();
    return 0;
}

udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* search)
{
    return search->entries.empty() ? nullptr : search->entries.data();
}

udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry)
{
    return entry->next;
}

const char* udev_list_entry_get_name(udev_list_entry* entry)
{
    return entry->path.c_str();
}

udev_device* udev_device_new_from_syspath(udev* /*context*/, const char* path)
{
    // A port without a parent would be taken for one that no hardware stands behind.
    auto* device = new udev_device{path, std::make_unique<udev_device>()};
    device->parent->path = path;
    return device;
}

udev_device* udev_device_unref(udev_device* device)
{
    delete device;
    return nullptr;
}

udev_device* udev_device_get_parent(udev_device* device)
{
    return device->parent.get();
}

const char* udev_device_get_devnode(udev_device* device)
{
    return device->path.c_str();
}

const char* udev_device_get_sysname(udev_device* device)
{
    return device->path.c_str();
}

const char* udev_device_get_driver(udev_device* /*device*/)
{
    return "cdc_acm";
}

const char* udev_device_get_property_value(udev_device* /*device*/, const char* key)
{
    const std::string wanted = key;
    if (wanted == "ID_VENDOR_ID") {
        return "2f26";
    }
    if (wanted == "ID_MODEL_ID") {
        return "3a98";
    }
    return wanted == "ID_SERIAL_SHORT" ? "VYR-00042" : nullptr;
}
}
