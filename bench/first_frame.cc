// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Preloaded into a program with a window: ends it as soon as its first frame is painted. So it is
// the same for every program, and none has anything built in for it. What it takes of the machine's
// memory by then goes into the file that FIRST_FRAME_MEMORY names, if any.
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace {

bool painted = false;

void reportMemory() {
  if (const char* name = std::getenv("FIRST_FRAME_MEMORY"))
    std::ofstream(name) << std::ifstream("/proc/self/smaps_rollup").rdbuf();
}

gboolean onRender(GSignalInvocationHint* /*hint*/, guint /*count*/, const GValue* /*values*/,
                  gpointer /*data*/) {
  painted = true;
  return TRUE;
}

gboolean onAfterPaint(GSignalInvocationHint* /*hint*/, guint /*count*/, const GValue* /*values*/,
                      gpointer /*data*/) {
  if (!painted) return TRUE;
  reportMemory();
  _exit(0);
}

/** Waits for the toolkit, which is ready before the main loop goes round for the first time. */
gboolean watch(gpointer /*data*/) {
  if (gtk_is_initialized() == FALSE) return G_SOURCE_CONTINUE;
  g_signal_add_emission_hook(g_signal_lookup("render", GDK_TYPE_SURFACE), 0, onRender, nullptr,
                             nullptr);
  g_signal_add_emission_hook(g_signal_lookup("after-paint", GDK_TYPE_FRAME_CLOCK), 0, onAfterPaint,
                             nullptr, nullptr);
  return G_SOURCE_REMOVE;
}

[[gnu::constructor]] void prepare() { g_idle_add_full(G_PRIORITY_HIGH, watch, nullptr, nullptr); }

}  // namespace
