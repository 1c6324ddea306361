// The dialog that edits one association.
#pragma once

#include <functional>
#include <string>

class QWidget;

// Opens it over parent, whose input is blocked until it closes, with the fields of line (pattern, open, view
// and edit command between TABs; empty for a new one). stored gets the new line; it is not called on Cancel.
void assoc_type_dlg_open(QWidget* parent, const std::string& line,
                         std::function<void(const std::string&)> stored);
