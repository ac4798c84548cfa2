#include "bench/startup/window_watcher.h"

#include <xcb/damage.h>

#include <algorithm>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeout{20};

constexpr std::uint8_t kEventMask = 0x7f;
} // namespace

void WindowWatcher::Free::operator()(void* memory) const noexcept {
    std::free(memory);
}

void WindowWatcher::Disconnect::operator()(xcb_connection_t* connection) const noexcept {
    xcb_disconnect(connection);
}

WindowWatcher::WindowWatcher() : connection_(xcb_connect(nullptr, nullptr)) {
    xcb_connection_t* const connection = connection_.get();
    if (xcb_connection_has_error(connection) != 0) {
        throw std::runtime_error("no display");
    }
    const xcb_query_extension_reply_t* damage = xcb_get_extension_data(connection, &xcb_damage_id);
    if (damage == nullptr || damage->present == 0) {
        throw std::runtime_error("the display has no DAMAGE extension");
    }
    firstDamageEvent_ = damage->first_event;
    const Owned<xcb_damage_query_version_reply_t> version(xcb_damage_query_version_reply(
        connection, xcb_damage_query_version(connection, XCB_DAMAGE_MAJOR_VERSION, XCB_DAMAGE_MINOR_VERSION),
        nullptr));

    constexpr std::string_view name = "_NET_WM_NAME";
    const Owned<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    if (!version || !atom) {
        throw std::runtime_error("the display does not answer");
    }
    nameAtom_ = atom->atom;

    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
    // An answer to anything means that the request before it is in force.
    const Owned<xcb_get_input_focus_reply_t> inForce(
        xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

DrawnWindow WindowWatcher::waitUntilDrawn(const std::string& title, int minimumWidth) {
    const auto deadline = Clock::now() + kTimeout;
    for (;;) {
        const Owned<xcb_generic_event_t> event = nextEvent(deadline);
        const std::uint8_t type = event->response_type & kEventMask;
        if (type == XCB_CREATE_NOTIFY) {
            const auto* created = reinterpret_cast<const xcb_create_notify_event_t*>(event.get());
            xcb_damage_create(connection_.get(), xcb_generate_id(connection_.get()), created->window,
                              XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        } else if (type == firstDamageEvent_ + XCB_DAMAGE_NOTIFY) {
            const auto now = Clock::now();
            const auto* damaged = reinterpret_cast<const xcb_damage_notify_event_t*>(event.get());
            if (auto drawn = lookAt(damaged->drawable, title, minimumWidth)) {
                drawn->when = now;
                return *drawn;
            }
        }
    }
}

std::optional<DrawnWindow> WindowWatcher::lookAt(xcb_window_t window, const std::string& title,
                                                 int minimumWidth) {
    if (titleOf(window) != title) {
        return std::nullopt;
    }
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection_.get(), xcb_get_geometry(connection_.get(), window), nullptr));
    if (!geometry || geometry->width < minimumWidth ||
        !hasPicture(window, geometry->width, geometry->height)) {
        return std::nullopt;
    }
    return DrawnWindow{{}, geometry->width, geometry->height};
}

WindowWatcher::Owned<xcb_generic_event_t> WindowWatcher::nextEvent(Clock::time_point deadline) {
    xcb_connection_t* const connection = connection_.get();
    xcb_flush(connection);
    for (;;) {
        if (Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
            return event;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (xcb_connection_has_error(connection) != 0 || left.count() <= 0) {
            throw std::runtime_error("the window was not drawn in time");
        }
        pollfd input{xcb_get_file_descriptor(connection), POLLIN, 0};
        poll(&input, 1, static_cast<int>(left.count()));
    }
}

std::string WindowWatcher::titleOf(xcb_window_t window) {
    constexpr std::uint32_t words = 256;
    const Owned<xcb_get_property_reply_t> name(xcb_get_property_reply(
        connection_.get(),
        xcb_get_property(connection_.get(), 0, window, nameAtom_, XCB_GET_PROPERTY_TYPE_ANY, 0, words),
        nullptr));
    if (!name) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(name.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(name.get()))};
}

bool WindowWatcher::hasPicture(xcb_window_t window, int width, int height) {
    constexpr std::uint32_t allPlanes = ~0U;
    const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(
        connection_.get(),
        xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), allPlanes),
        nullptr));
    if (!image) {
        return false;
    }
    constexpr std::size_t bytesPerPixel = 4;
    const std::uint8_t* const bytes = xcb_get_image_data(image.get());
    const auto size = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
    return size > bytesPerPixel && !std::equal(bytes, bytes + size - bytesPerPixel, bytes + bytesPerPixel);
}

} // namespace bench
