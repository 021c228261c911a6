#pragma once

#include <QString>

class Form;

// Gives the media players of the video and audio screens a harmless file, so that they let go of the
// one they hold.
void UnlatchReviewPlayers();

// A screen of the review chain by its name, loaded when first touched; nullptr for one this program
// does not have yet.
Form *ReviewScreenNamed(const QString &name);
