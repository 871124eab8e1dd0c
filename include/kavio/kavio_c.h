/**
 * @file
 * Kavio for other languages: a session takes operations as lines of JSON and gives reports as lines of JSON. The lines
 * are those of `kavio-wallet --jsonl`: docs/wallet.md, and docs/bindings.md for what is different here.
 *
 * Threads. Every function may be called from any thread, and several threads may use one session at the same time, with
 * one exception: while kavio_destroy runs and afterwards, nobody else may use that session, except that calls of
 * kavio_receive that already wait are ended. Nothing here calls back into the application. Only kavio_receive waits for
 * anything to happen; kavio_create, kavio_close and kavio_destroy wait until what the library's thread is doing just
 * then is done. That thread, one for the process, is started by the first session, runs all operations and reports,
 * takes no signals, and ends with the process. A process that forks must not use the library in the child.
 *
 * No C++ exception leaves these functions. A null pointer where none is allowed gives KAVIO_INVALID.
 */
#ifndef KAVIO_KAVIO_C_H
#define KAVIO_KAVIO_C_H

#include <stddef.h>

/** Marks what a program outside the library may link to. */
#if defined(__GNUC__)
#define KAVIO_C_API __attribute__((visibility("default")))
#else
#define KAVIO_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What the functions return. */
enum {
    KAVIO_OK = 0,       /**< it worked */
    KAVIO_TIMEOUT = 1,  /**< kavio_receive: nothing was reported within the limit */
    KAVIO_CLOSED = 2,   /**< the session has been closed */
    KAVIO_FAILED = 3,   /**< kavio_create: the error line says why */
    KAVIO_INVALID = 4,  /**< a pointer is null */
    KAVIO_NO_MEMORY = 5 /**< nothing was done */
};

/** The version of this interface: programs check that kavio_abi() returns what they were compiled with. */
#define KAVIO_ABI 1

/** One application's use of the library: its facades, the lines that it sent, and those that it has not received yet.
 */
typedef struct kavio_session kavio_session;

/**
 * Opens a session. `options` is a JSON object, ended by a NUL, with any of these members:
 *
 *     apiKey          text, the API key of the first facade, "main"; default "demo-key"
 *     environment     "TEST", "TESTS" or "PROD", the environment of the first facade; default "TEST"
 *     facade          false for a session that begins without a facade
 *     storeDir        text, the folder that holds the key/value suites, and with them the login
 *     connectTo       "HOST:PORT" that every connection goes to, whatever host the URL names; default none
 *     caFile          text, the PEM file of certificate authorities to trust instead of the system's
 *     kavioKey        text, the application's "KavioKey"
 *     bundleVersion   text, the application's "CFBundleVersion"
 *
 * The last five belong to the process. The process's first session sets them, and must name a `storeDir`; later ones,
 * also those that are opened after all others were destroyed, share them, and may leave them out or repeat them. Any
 * other value is an error. Sessions thus share the login, too, as facades do.
 *
 * Returns KAVIO_OK and a session in `*session`; or KAVIO_FAILED, and in `*error`, unless `error` is null, a line such
 * as
 * {"event":"error","message":"\"connectTo\" must be HOST:PORT"}, to be released with kavio_free. `*session` and
 * `*error` are null if they are not set.
 */
KAVIO_C_API int kavio_create(const char* options, kavio_session** session, char** error);

/**
 * Sends one line of `length` bytes, which need not end in a newline or a NUL, and returns at once: lines are carried
 * out in the order in which they were sent, each after the one before it has had its reports. Whatever is wrong with a
 * line is reported as a line. The bytes are copied.
 */
KAVIO_C_API int kavio_send(kavio_session* session, const char* line, size_t length);

/**
 * Takes the next line that was reported, after waiting for one for at most `milliseconds`: 0 does not wait, and a
 * negative number waits for as long as it takes. Each line goes to one caller. Returns KAVIO_OK and in `*line` the line
 * without a newline, ended by a NUL (it contains no other), to be released with kavio_free; its length in `*length`
 * unless that is null. Otherwise `*line` is null.
 */
KAVIO_C_API int kavio_receive(kavio_session* session, int milliseconds, char** line, size_t* length);

/**
 * A file descriptor that can be read from, for poll and the like, as long as there is a line to receive and once the
 * session is closed. It belongs to the session: only poll it. -1 if `session` is null.
 */
KAVIO_C_API int kavio_descriptor(kavio_session* session);

/**
 * Ends everything that waits: calls of kavio_receive return KAVIO_CLOSED, now and from now on, and lines that have not
 * been carried out or received are dropped. Work under way is given up as when an application destroys its facades: a
 * purchase that has not left never will, and one that has is in the journal of the next session. May be called again.
 */
KAVIO_C_API int kavio_close(kavio_session* session);

/** Closes the session and releases it. Null is allowed. */
KAVIO_C_API void kavio_destroy(kavio_session* session);

/** Releases a line that this library returned. Null is allowed. */
KAVIO_C_API void kavio_free(char* line);

/**@{*/
/** The library's version, such as "1.0.0", its build number, and the version of this interface. */
KAVIO_C_API const char* kavio_version(void);
KAVIO_C_API const char* kavio_build(void);
KAVIO_C_API int kavio_abi(void);
/**@}*/

#ifdef __cplusplus
}
#endif

#endif
