#pragma once

#include <QString>

class Form;

// A screen of the review chain by its name, loaded when first touched; nullptr for one this program
// does not have yet.
Form *ReviewScreenNamed(const QString &name);
