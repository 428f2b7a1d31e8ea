#pragma once

#include <QtGlobal>

#include <xcb/xtest.h>

/// A keyboard of the X server: key events and mapping changes as they come from a real one. Any thread.
class Keyboard {
  public:
    Keyboard() : m_connection(xcb_connect(nullptr, nullptr)) {}

    ~Keyboard() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(Keyboard)

    /// Presses and releases the key.
    void strike(uint8_t code) {
        for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
            xcb_test_fake_input(m_connection, type, code, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(m_connection);
    }

    /// Gives the key another symbol. Sent together with the next strike, so that no program can react
    /// between.
    void map(uint8_t code, xcb_keysym_t symbol) {
        xcb_change_keyboard_mapping(m_connection, 1, code, 1, &symbol);
    }

  private:
    xcb_connection_t* m_connection;
};
