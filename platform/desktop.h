// The one seam between the engine and whatever desktop it runs on: what the engine asks for, in plain
// functions that name no toolkit. platform/qt/ answers for the program, platform/terminal/ for zan-op.
#pragma once

#include <functional>
#include <string>

struct fop_info;

// --- the interface thread's own services -----------------------------------------------------------------

// True on the thread that runs the interface.
bool desk_on_interface_thread();

// Writes text into a status pane: 1 (left, status1) or 2 (right, status2). Interface thread.
void desk_status(int pane, const std::string& text);

// Lets waiting interface events run. With nothing waiting, sleeps up to wait_ms for an event, a call or
// a desk_wake; 0 never sleeps. Interface thread.
void desk_pending_events(int wait_ms = 0);

// Ends the sleep of desk_pending_events. Any thread.
void desk_wake();

// Calls fn every interval_ms on the interface thread until stopped. Returns the timer's number (> 0).
int desk_timer_start(int interval_ms, std::function<void()> fn);
void desk_timer_stop(int timer);

// Shows a message over the main window with the one button "&Continue" and waits. Interface thread.
void desk_report(const std::string& title, const std::string& message);

// Sounds the bell.
void desk_bell();

// --- from any thread -----------------------------------------------------------------------------------

// Runs fn on the interface thread and returns when it has run (at once when called on that thread).
// False, without running it, once the interface is gone.
bool desk_call(std::function<void()> fn);

// Runs fn on the interface thread some time later. Dropped once the interface is gone.
void desk_post(std::function<void()> fn);

// A question with the button list of core/button_list.h. Waits for the answer: the button's number from 1.
// Windows stay open side by side, none blocks another. Answers with the escape button once desk_end was
// called.
int desk_alert(const std::string& title, const std::string& message, const std::string& buttons);

// A notice with the one button "&Close"; waits until it is closed (or desk_end).
void desk_notice(const std::string& title, const std::string& message);

// Asks for a shorter name (at most 47 bytes). True with the answer in *new_name for "Rename"; false for
// "Skip".
bool desk_long_name(const std::string& old_name, std::string* new_name);

// Shows a copy of the record in its slot; of several that wait only the newest is drawn.
void desk_slot_refresh(const fop_info& info);

// Tells that the operation of this slot has ended (the slot table belongs to the interface thread).
void desk_slot_ended(void* slot);

// Answers every open question and notice with its escape button, and every later one at once, so that
// whoever waits for an answer can end. Any thread; nothing undoes it.
void desk_end();

// Whether desk_end was called. Any thread.
bool desk_ended();
