pragma Singleton
import QtQuick
import Harvellon.Desktop

/// Every size, colour and duration of the views.
QtObject {
    readonly property bool dark: Appearance.dark
    readonly property bool still: Appearance.reducedMotion
    readonly property bool strong: Appearance.highContrast

    // Surfaces
    readonly property color bg: dark ? "#1f1c19" : "#f5f0eb"
    readonly property color card: dark ? "#2a2622" : "#ffffff"
    readonly property color rowHover: dark ? "#352f29" : "#faf7f4"
    readonly property color line: dark ? "#353029" : "#f0eae3"
    readonly property color cardEdge: strong ? outline : dark ? "#38322c" : "#e8e0d7"
    readonly property color outline: strong ? switchOff : dark ? "#4a433b" : "#ddd4ca"
    readonly property color ghost: dark ? "#3a342d" : "#f0e8e0"

    // Words
    readonly property color ink: dark ? "#f5f0eb" : "#1a1a1a"
    readonly property color secondary: strong ? ink : dark ? "#b8aea3" : "#666666"
    readonly property color footer: strong ? ink : dark ? "#9c9288" : "#706a63"
    readonly property color primaryBg: dark ? "#f5f0eb" : "#1a1a1a"
    readonly property color primaryInk: dark ? "#1a1a1a" : "#ffffff"

    // States
    readonly property color okBg: dark ? "#203825" : "#e8f5e9"
    readonly property color okInk: dark ? "#97d69d" : "#2e7d32"
    readonly property color busyBg: dark ? "#38322c" : "#f5f0eb"
    readonly property color busyInk: dark ? "#cfc5ba" : "#5f5850"
    readonly property color badBg: dark ? "#43211e" : "#fcebe9"
    readonly property color badEdge: dark ? "#5c2e29" : "#f3d2cd"
    readonly property color badInk: dark ? "#ffb0a6" : "#a3261d"
    readonly property color danger: dark ? "#ff8a80" : "#b92424"
    readonly property color warn: dark ? "#f2c14a" : "#8f6200"
    readonly property color info: dark ? "#a9b3bd" : "#5f6770"
    readonly property color focus: dark ? "#8fbcff" : "#1a5fb4"
    readonly property color switchOn: dark ? "#7cc483" : "#2e7d32"
    readonly property color switchOff: dark ? "#7d746a" : "#8a8178"
    readonly property color knobOn: dark ? "#1f1c19" : "#ffffff"
    readonly property color knobOff: "#ffffff"
    readonly property color selection: Qt.alpha(focus, 0.14)
    readonly property color emptyIcon: switchOff

    /// The colours of the activity log's levels, from info to error.
    readonly property list<color> levels: [info, okInk, warn, danger]

    // Type
    readonly property string family: Appearance.fontFamily
    // Names and titles must read as heavier in any font. Buttons and pills ask for a medium weight and do without
    // it: their frame tells them apart, and bold would be louder than the names.
    readonly property int nameWeight: Appearance.mediumWeight
    readonly property int titleWeight: Appearance.semiboldWeight
    readonly property int headingSize: 17
    readonly property int titleSize: 15
    readonly property int bodySize: 13
    readonly property int labelSize: 12
    readonly property int captionSize: 11
    readonly property int bodyLine: 17
    readonly property int captionLine: 14

    // Space and corners
    readonly property int panelMargin: 16
    readonly property int settingsMargin: 20
    readonly property int gap: 8
    readonly property int inset: 14
    readonly property int rowHeight: 40
    readonly property int buttonSide: 30
    readonly property int smallButtonSide: 24
    readonly property int fieldHeight: 32
    readonly property int pictureSide: 28
    readonly property int textStart: 50 ///< of a card's words, right of its picture
    readonly property int scrollBarWidth: 6
    readonly property int cardRadius: 12
    readonly property int rowRadius: 8
    readonly property int tipRadius: 6
    readonly property int smallIconSize: 16

    // Motion, in milliseconds
    readonly property int hover: still ? 0 : 120
    readonly property int crossFade: still ? 0 : 160
    readonly property int slide: still ? 0 : 180
    readonly property int spinnerTurn: 900
    readonly property int pulse: 1400
}
