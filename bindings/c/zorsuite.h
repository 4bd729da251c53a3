#ifndef ZORSUITE_H
#define ZORSUITE_H

/// \file
/// The C interface of ZorSuite: C99, for C and for every language that can call C.
///
/// 1. Functions that can fail return `ZOR_OK`, or a count, port or descriptor of 0 or more, or else a
/// negative
///    `ZOR_ERROR_` code. No pointer may be null unless its comment says so: a null one costs nothing but
///    `ZOR_ERROR_NULL`. Nothing throws, and nothing of C++ passes this interface.
/// 2. Texts are bytes with a length, in no particular encoding. A null text of length 0 is an empty one. What
///    is longer than its field is cut, and so is everything from a NUL on.
/// 3. All state but the callbacks is process-wide: two suites drive the same workers. Functions without a
///    suite as their first argument concern the whole process.
/// 4. Call the starts (`..._start`, `..._listen`, `zor_device_search`, `zor_device_upgrade`) and
///    `zor_smart_config_v5_append` from one thread, the application's. Any thread may call the others;
///    `zor_run_main_queue` says what it asks for. A start first ends the worker of its kind and waits for it:
///    about a millisecond, or the rest of an upgrade. Nothing else blocks unless its comment says so.
///
/// What the functions take over from the application follows one rule. A function, its `user` pointer and
/// `destroy`, which may be null, come together. `destroy(user)` is called exactly once, when none of them
/// will be used again, whether the call that handed them over succeeded or not:
///
/// - a call that fails, or that is given a null function, destroys them before it returns;
/// - what a later call replaces or removes is destroyed before that call returns, on its thread. If it is in
///   use at that moment, it is destroyed when that use ends, on the thread that uses it: the comments say
///   which threads those are;
/// - what is still set when the process ends is not destroyed.
///
/// Neither a callback nor `destroy` may throw or `longjmp` into the library. No lock is held while they run,
/// so they may call anything that their comments do not forbid.

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Marks what the shared library exports.
#define ZOR_C_API __attribute__((visibility("default")))

// The version of this header; `zor_version` tells that of the library.
#define ZOR_C_VERSION_MAJOR 3  ///< Changes with an interface that old programs cannot use.
#define ZOR_C_VERSION_MINOR 5  ///< Grows with every addition.
#define ZOR_C_VERSION_PATCH 1  ///< Grows with every correction.
/// All three in one number, to compare: 30501 for 3.5.1.
#define ZOR_C_VERSION (ZOR_C_VERSION_MAJOR * 10000 + ZOR_C_VERSION_MINOR * 100 + ZOR_C_VERSION_PATCH)

/// The version of the library, as `ZOR_C_VERSION` counts.
ZOR_C_API int32_t zor_version(void);

/// The same as text, such as "3.5.1"; it lives as long as the library.
ZOR_C_API const char* zor_version_text(void);

/// What the functions return.
enum {
  ZOR_OK = 0,               ///< It was done.
  ZOR_ERROR_NULL = -1,      ///< A pointer that must not be null is.
  ZOR_ERROR_ARGUMENT = -2,  ///< An argument is out of its range or names nothing that exists.
  ZOR_ERROR_MEMORY = -3,    ///< There is no memory, and nothing was changed.
  ZOR_ERROR_SYSTEM = -4     ///< The system refused, or the queue is full.
};

/// A text of the library's, which does not own it: `length` bytes, and a NUL that does not count after them.
typedef struct zor_text {
  const char* bytes;  ///< Never null.
  size_t length;      ///< In bytes.
} zor_text;

// --- The suite and its callbacks.

/// The library's one entry point.
typedef struct zor_suite zor_suite;

/// Stores a new suite, which has no callbacks yet, in `*suite`, or null if that fails. Free it with
/// `zor_suite_free`.
ZOR_C_API int32_t zor_suite_create(zor_suite** suite);

/// Frees `suite`; no function may use it at that time or later. Ends no worker. None of its callbacks begins
/// after this, also of those that are queued. A callback of the suite may free it.
ZOR_C_API int32_t zor_suite_free(zor_suite* suite);

/// A module that was heard. The texts come from the network: NUL-free and bounded, otherwise untrusted.
typedef struct zor_module {
  size_t size;            ///< Of this struct in the library that calls; later versions may append to it.
  zor_text id;            ///< At most 19 bytes: the module's `mac`.
  zor_text ip;            ///< The dotted-quad address that the line came from.
  zor_text version;       ///< At most 19 bytes: that of its firmware.
  zor_text capabilities;  ///< At most 39 bytes.
  zor_text extension;     ///< At most 399 bytes: the rest of the line, verbatim.
} zor_module;

/// Hears of a module, on the main-thread queue. `module` and its texts last until it returns.
typedef void (*zor_module_callback)(void* user, const zor_module* module);

/// What a suite calls. Set `size` to `sizeof(zor_callbacks)` and all that is not needed to zero.
typedef struct zor_callbacks {
  size_t size;                          ///< Of this struct in the application.
  void* user;                           ///< Passed to all of them.
  void (*destroy)(void* user);          ///< May be null.
  zor_module_callback on_smart_found;   ///< A module announced that it has joined. May be null.
  zor_module_callback on_search_found;  ///< A module answered a search. May be null.
} zor_callbacks;

/// Replaces the callbacks of `suite`, for callbacks that are queued already too; null `callbacks` for none.
/// The struct is copied; one of a `size` that is too small is `ZOR_ERROR_ARGUMENT`, and none of it is used or
/// destroyed. While there are no callbacks, what is heard is reported to nobody and not again.
///
/// The only thread that uses callbacks is the one that runs the main-thread queue, so they are destroyed
/// there, or where they are replaced or the suite is freed: never on a worker's thread.
ZOR_C_API int32_t zor_suite_set_callbacks(zor_suite* suite, const zor_callbacks* callbacks);

// --- Smart configuration.

// How much a run carries, bytes.
#define ZOR_C_MAX_SSID_LENGTH 32         ///< Of a network's name.
#define ZOR_C_MAX_PASS_PHRASE_LENGTH 64  ///< Of its pass phrase.
#define ZOR_C_MAX_APPEND_LENGTH 16       ///< Of application data, version 5 only.
/// All three together in version 5; the application data give way.
#define ZOR_C_MAX_PAYLOAD_LENGTH 96

/// The UDP port on which modules announce themselves unless a run names another.
#define ZOR_C_ANNOUNCEMENT_PORT 25010

/// Starts a version 5 run of `timeout_ms` milliseconds. Whether its senders got sockets shows in
/// `zor_smart_config_status`. Opens no listener. When the multicast sender ends by the time-out, the run's
/// listener ends too.
ZOR_C_API int32_t zor_smart_config_v5_start(zor_suite* suite, const char* ssid, size_t ssid_length,
                                            const char* pass_phrase, size_t pass_phrase_length,
                                            int32_t timeout_ms);

/// Sets the application data of later version 5 runs: the first 16 of `length` bytes, or none when `bytes` is
/// null and `length` 0.
ZOR_C_API int32_t zor_smart_config_v5_append(zor_suite* suite, const uint8_t* bytes, size_t length);

/// Sets the first 14 tunables from as many bytes, for a running sender too; fewer are `ZOR_ERROR_ARGUMENT`.
ZOR_C_API int32_t zor_smart_config_v5_set_property(zor_suite* suite, const uint8_t* bytes, size_t length);

/// 1 mixes version 3 frames into later version 5 runs; any other value does not.
ZOR_C_API int32_t zor_smart_config_v5_mix_v3_enable(zor_suite* suite, uint8_t flag);

/// Starts a listener on port 25010, which ends with the run, and a version 3 run of `timeout_ms`
/// milliseconds. When the port is taken it changes nothing, and the listener's report shows it.
ZOR_C_API int32_t zor_smart_config_v3_start(zor_suite* suite, const char* ssid, size_t ssid_length,
                                            const char* pass_phrase, size_t pass_phrase_length,
                                            int32_t timeout_ms);

/// Listens for announcements on UDP `port`; outside 1..65534 it takes the first free port from 25010 up.
/// Returns the port, or `ZOR_ERROR_SYSTEM` when it is taken or there is no socket, thread or memory.
ZOR_C_API int32_t zor_smart_config_online_listen(zor_suite* suite, int32_t port);

/// Asks the smart configuration senders and the listener to end. Does not wait for them.
ZOR_C_API int32_t zor_smart_config_stop(zor_suite* suite);

/// Stores the share of the run's time-out that has passed, 0..100, in `*progress`, or the negative code of a
/// sender that got no socket. It counts by the wall clock, a step of which can make it any number.
ZOR_C_API int32_t zor_smart_config_progress(zor_suite* suite, int32_t* progress);

/// Stores 0 in `*status`, or the code of a sender that got no socket for a frame: -101, -102, -110 or -111
/// for multicasts, -201 to -205 for broadcasts; -101 and -201 also when there was no thread.
ZOR_C_API int32_t zor_smart_config_status(int32_t* status);

/// Stores what a run must carry as application data, so that modules announce themselves on `port`, 1..65535.
ZOR_C_API int32_t zor_make_port_record(int32_t port, uint8_t record[3]);

// --- Modules on the network.

/// Starts a search, which calls `on_search_found` once for each module. It ends after its last request.
ZOR_C_API int32_t zor_device_search(zor_suite* suite);

/// Sets the milliseconds between a search's requests and their number, for a running search too.
ZOR_C_API int32_t zor_device_search_set_property(zor_suite* suite, int32_t interval_ms, int32_t count);

/// Tells the module at dotted-quad `ip` to fetch the firmware at `url`, "http://host[:port]/path" of at most
/// 512 bytes, and follows its progress. Waits, without limit, for a running upgrade.
ZOR_C_API int32_t zor_device_upgrade(zor_suite* suite, const char* ip, size_t ip_length, const char* url,
                                     size_t url_length);

/// Stores in `*progress`: 0 requested, 1 command sent, 2..99 per cent, 100 or more done; negative for a
/// failure: -100 silence for 10 s, -111 or -112 URL refused, -121 or -122 no socket or thread, else the
/// module's code.
ZOR_C_API int32_t zor_device_upgrade_progress(zor_suite* suite, int32_t* progress);

// --- Reports. Set `size` to the size of the struct before the call: later versions append to the three
// reports and fill what the caller's have room for; what they do not know is zero. The structs inside never
// change.

/// How a worker stands, or how its latest run ended.
enum {
  ZOR_STATE_IDLE = 0,       ///< Has not run yet, or was not part of the latest start.
  ZOR_STATE_RUNNING = 1,    ///< Runs, or has been asked to end and has not ended yet.
  ZOR_STATE_FINISHED = 2,   ///< Ended by itself.
  ZOR_STATE_TIMED_OUT = 3,  ///< Its run's time-out passed.
  ZOR_STATE_STOPPED = 4,    ///< The application stopped it.
  ZOR_STATE_REPLACED = 5,   ///< A start of its kind took its place.
  ZOR_STATE_NO_SOCKET = 6,  ///< The system gave it no socket.
  ZOR_STATE_NO_THREAD = 7   ///< The system gave it no thread or no memory.
};

/// What the system said to the latest call on a socket that failed.
typedef struct zor_system_error {
  int32_t number;  ///< `errno`; 0 while nothing has failed.
  int32_t unused;  ///< 0.
  int64_t at_ms;   ///< When, by `zor_clock_ms`.
} zor_system_error;

/// One sender.
typedef struct zor_sender_report {
  int32_t state;           ///< A `ZOR_STATE_`.
  int32_t unused;          ///< 0.
  int64_t datagrams;       ///< Sent.
  int64_t bytes;           ///< Payload bytes of these.
  int64_t failed_sends;    ///< Datagrams that the system refused.
  int64_t sockets_opened;  ///< 1 while nothing failed.
  int64_t cycles;          ///< Passes of the packet that were completed.
  int64_t blocks;          ///< Blocks of cycles that were completed.
  zor_system_error error;  ///< The latest failure to send or to open a socket.
} zor_sender_report;

/// The datagrams that reached a listener or a search, and what became of them.
typedef struct zor_line_report {
  int64_t datagrams;         ///< Received, of any content.
  int64_t lines;             ///< Announcements, or answers to a search.
  int64_t reported;          ///< Modules posted to the callbacks.
  int64_t repeats;           ///< Lines of a module that was reported before.
  int64_t without_delegate;  ///< New modules for which there were no callbacks.
  int64_t dropped;           ///< Reports that found the main-thread queue full or no memory.
  int64_t other_content;     ///< Refused: another tag, or no module line at all.
  int64_t empty;             ///< Refused: no content.
} zor_line_report;

/// The listener for announcements.
typedef struct zor_listener_report {
  int32_t state;             ///< A `ZOR_STATE_`.
  int32_t port;              ///< UDP port that it was bound to, 0 while there was none.
  zor_line_report received;  ///< What came in.
  int64_t sockets_opened;    ///< 1 while its socket lived.
  zor_system_error error;    ///< The latest failure to receive or to open a socket.
} zor_listener_report;

/// The latest smart configuration run and the latest listener.
typedef struct zor_run_report {
  size_t size;                   ///< Of this struct in the application.
  zor_sender_report multicast;   ///< Version 5 multicast, or version 3.
  zor_sender_report broadcast;   ///< Version 5 broadcast.
  zor_listener_report listener;  ///< Whether it is the run's or not.
} zor_run_report;

/// The latest search.
typedef struct zor_search_report {
  size_t size;               ///< Of this struct in the application.
  int32_t state;             ///< A `ZOR_STATE_`.
  int32_t unused;            ///< 0.
  int64_t requests_sent;     ///< Handed to the system.
  int64_t requests_failed;   ///< Refused by the system, or without a socket.
  zor_line_report received;  ///< What came in.
  int64_t sockets_opened;    ///< 1 while nothing failed.
  zor_system_error error;    ///< The latest failure of a socket.
} zor_search_report;

/// The latest upgrade.
typedef struct zor_upgrade_report {
  size_t size;              ///< Of this struct in the application.
  int32_t state;            ///< A `ZOR_STATE_`.
  int32_t unused;           ///< 0.
  int64_t requests_sent;    ///< Handed to the system.
  int64_t requests_failed;  ///< Refused by the system, or without a socket.
  int64_t datagrams;        ///< Received, of any content and from anywhere.
  int64_t answers;          ///< Accepted.
  int64_t other_address;    ///< Refused: from another address.
  int64_t other_port;       ///< Refused: from another port of the module.
  int64_t not_a_response;   ///< Refused: no response line, or empty.
  int64_t sockets_opened;   ///< 1 while its socket lived.
  zor_system_error error;   ///< The latest failure of a socket.
} zor_upgrade_report;

/// Stores what the latest run and listener have done. A `size` that is too small for the first version of the
/// struct is `ZOR_ERROR_ARGUMENT`.
ZOR_C_API int32_t zor_smart_config_report(zor_suite* suite, zor_run_report* report);

/// The same for the latest search.
ZOR_C_API int32_t zor_device_search_report(zor_suite* suite, zor_search_report* report);

/// The same for the latest upgrade.
ZOR_C_API int32_t zor_device_upgrade_report(zor_suite* suite, zor_upgrade_report* report);

/// Milliseconds by the wall clock since the first call in the process: what the reports' times count by.
ZOR_C_API int64_t zor_clock_ms(void);

// --- Workers.

/// The kinds of worker.
enum {
  ZOR_WORKER_BROADCAST = 0,  ///< Version 5 broadcast sender.
  ZOR_WORKER_MULTICAST = 1,  ///< Version 5 multicast or version 3 sender.
  ZOR_WORKER_LISTENER = 2,   ///< Listener for announcements.
  ZOR_WORKER_SEARCH = 3,     ///< Search for modules.
  ZOR_WORKER_UPGRADE = 4     ///< Firmware upgrade.
};

/// Returns 1 while a worker of that kind runs, else 0.
ZOR_C_API int32_t zor_worker_is_running(int32_t worker);

/// Asks the worker of that kind, if there is one, to end. Does not wait for it. An upgrade does not listen.
ZOR_C_API int32_t zor_worker_cancel(int32_t worker);

/// Waits, without limit, until no worker of that kind runs.
ZOR_C_API int32_t zor_worker_wait(int32_t worker);

// --- The main-thread queue, on which every callback runs: in order, one at a time.

/// Runs what the built-in queue holds, on the calling thread, the application's main thread. Waits at most
/// `wait_ms` milliseconds (0 or less: not at all) for the first closure. Returns how many it ran.
ZOR_C_API int32_t zor_run_main_queue(int32_t wait_ms);

/// Returns a descriptor that polls readable while the built-in queue holds work, for the application's event
/// loop, or `ZOR_ERROR_SYSTEM`. The library owns it: do not read, write or close it.
ZOR_C_API int32_t zor_main_queue_descriptor(void);

/// Runs `function(user)` on the main-thread queue and destroys it there. `ZOR_ERROR_SYSTEM` when 1,024 are
/// undelivered, memory is short or the application's loop refused it. What the application's loop drops is
/// destroyed where it drops it, or on the thread that posts if that has not returned yet.
ZOR_C_API int32_t zor_post_to_main_queue(void (*function)(void* user), void* user,
                                         void (*destroy)(void* user));

/// Work for the application's main loop.
typedef struct zor_closure zor_closure;

/// Runs `closure` and frees it. Main thread.
ZOR_C_API int32_t zor_closure_run(zor_closure* closure);

/// Frees `closure` without running it. Any thread.
ZOR_C_API int32_t zor_closure_free(zor_closure* closure);

/// Hands `closure` to the application's main loop and returns 1, or 0 if the loop refuses it. It is called on
/// the thread that posts, a worker's or the application's. It must not run the closure there and should
/// return soon. After a 1 the application calls `zor_closure_run` or `zor_closure_free` once, at any time;
/// until then the closure counts as undelivered.
typedef int32_t (*zor_main_queue_post)(void* user, zor_closure* closure);

/// Makes `post` take all that is posted from now on, in place of the built-in queue; a null `post` restores
/// that. The threads that use it are those that post.
ZOR_C_API int32_t zor_set_main_queue(zor_main_queue_post post, void* user, void (*destroy)(void* user));

// --- Sockets.

/// Binds every socket that is opened from now on to the network interface called `name`, such as "wlan0"; an
/// empty name leaves the choice to the system's routes again. `ZOR_ERROR_ARGUMENT` when there is no such
/// interface now or the system has no way to bind to one.
ZOR_C_API int32_t zor_set_interface(const char* name, size_t length);

/// Does to a new socket what only the application can; returns 0 to refuse it. It is called on the thread
/// that opens the socket, the application's or a worker's, several at a time. It must not close the
/// descriptor, keep it, open sockets of the library, or start a worker.
typedef int32_t (*zor_socket_hook)(void* user, int32_t descriptor);

/// Makes `hook` see every new socket; a null one restores the default, none.
/// The threads that use it are those that open sockets.
ZOR_C_API int32_t zor_set_socket_hook(zor_socket_hook hook, void* user, void (*destroy)(void* user));

// --- The log.

/// Receives one log line, without a line end. It may hold SSID and pass phrase as they were given: treat it
/// as bytes and as secret. It is called on the thread that writes, the application's or a worker's, several
/// at a time; a sender waits for it. It must not start a worker.
typedef void (*zor_log_sink)(void* user, zor_text line);

/// Sends the library's log lines to `sink`; a null one restores the default, the system's log. The
/// threads that use it are those that write.
ZOR_C_API int32_t zor_set_log_sink(zor_log_sink sink, void* user, void (*destroy)(void* user));

/// Writes one line where the library's own go.
ZOR_C_API int32_t zor_log_line(const char* line, size_t length);

// --- Tunables and paces.

/// The process-wide numbers that pace the workers; a change counts for running ones too. Intervals are
/// milliseconds, 0 or less for none; a length base of 0 switches its channel off at a start.
enum {
  ZOR_TUNABLE_MC_LENGTH = 0,           ///< Multicast length base, bytes; 30 at load.
  ZOR_TUNABLE_MC_CHAR_INTERVAL = 1,    ///< Multicast wait after each datagram; 30 at load.
  ZOR_TUNABLE_MC_LOOP_INTERVAL = 2,    ///< Multicast wait after each cycle; 100 at load.
  ZOR_TUNABLE_MC_BLOCK_INTERVAL = 3,   ///< Multicast wait after each block; 0 at load.
  ZOR_TUNABLE_MC_TAG_REPEAT = 4,       ///< Multicast sync datagrams per cycle; 1 at load.
  ZOR_TUNABLE_MC_DATA_REPEAT = 5,      ///< Multicast data parts per cycle; 1 at load.
  ZOR_TUNABLE_MC_LOOP_REPEAT = 6,      ///< Multicast cycles per block; 5 at load.
  ZOR_TUNABLE_BC_LENGTH = 7,           ///< Broadcast length base, bytes; 30 at load.
  ZOR_TUNABLE_BC_CHAR_INTERVAL = 8,    ///< Broadcast wait after each datagram; 15 at load.
  ZOR_TUNABLE_BC_LOOP_INTERVAL = 9,    ///< Broadcast wait after each cycle; 100 at load.
  ZOR_TUNABLE_BC_BLOCK_INTERVAL = 10,  ///< Broadcast wait after each block; 0 at load.
  ZOR_TUNABLE_BC_TAG_REPEAT = 11,      ///< Broadcast repeats per sync datagram; 1 at load.
  ZOR_TUNABLE_BC_DATA_REPEAT = 12,     ///< Broadcast repeats per data datagram; 1 at load.
  ZOR_TUNABLE_BC_LOOP_REPEAT = 13,     ///< Broadcast cycles per block; 5 at load.
  ZOR_TUNABLE_SEARCH_COUNT = 14,       ///< Requests of a search; 20 at load.
  ZOR_TUNABLE_SEARCH_INTERVAL = 15     ///< Milliseconds between requests; 100 at load.
};

/// Stores the tunable's number in `*value`.
ZOR_C_API int32_t zor_get_tunable(int32_t tunable, int32_t* value);

/// Sets it to any number.
ZOR_C_API int32_t zor_set_tunable(int32_t tunable, int32_t value);

/// Stores the values of the pace called `name`, such as "fast", for `zor_smart_config_v5_set_property`.
/// `ZOR_ERROR_ARGUMENT` when there is none.
ZOR_C_API int32_t zor_find_pace(const char* name, size_t length, uint8_t values[14]);

/// Stores the name of pace `index`, from 0 up, which lives as long as the library. `ZOR_ERROR_ARGUMENT` after
/// the last.
ZOR_C_API int32_t zor_pace_name(int32_t index, zor_text* name);

#ifdef __cplusplus
}
#endif

#endif
