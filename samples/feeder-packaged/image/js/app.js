"use strict";

// The TV shows this app over the channel; the daemon only unpacks it.
document.title += " (running)";
