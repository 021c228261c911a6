#pragma once

// An access key ("&Save", Alt+S) moves the focus to its button first and clicks it only when the
// focus got there: the control being left checks what was typed into it, as it does when the operator
// clicks the button with the mouse, and a control that keeps the focus (a date box holding no date)
// keeps the click from happening. Qt's own access keys click without moving the focus. A button's key
// goes before a menu title's of the same letter ("&Save" before "&Scan Engine").
void InstallAccessKeyFocus();
