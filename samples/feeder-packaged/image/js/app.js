"use strict";

// Shown over the channel by the TV; the daemon only puts it in its place.
document.title += " (running)";
