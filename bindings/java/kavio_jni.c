/* The native methods of kavio.Session. Lines are bytes of UTF-8: JNI's own texts are not. */
#include <kavio/kavio_c.h>

#include <jni.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

static kavio_session* session_of(jlong handle) { return (kavio_session*)(intptr_t)handle; }

static void throw_new(JNIEnv* env, const char* name, const char* message) {
    jclass type = (*env)->FindClass(env, name);
    if (type != NULL) (*env)->ThrowNew(env, type, message);
}

/* Null, with an exception pending, if memory has run out. */
static jbyteArray bytes_of(JNIEnv* env, const char* text, size_t length) {
    jbyteArray bytes = (*env)->NewByteArray(env, (jsize)length);
    if (bytes != NULL) (*env)->SetByteArrayRegion(env, bytes, 0, (jsize)length, (const jbyte*)text);
    return bytes;
}

/* The handle; or the error line in `error[0]`. */
JNIEXPORT jlong JNICALL Java_kavio_Session_create(JNIEnv* env, jclass type, jbyteArray options, jobjectArray error) {
    jsize length = (*env)->GetArrayLength(env, options);
    char* text = calloc((size_t)length + 1, 1);
    char* line = NULL;
    kavio_session* session = NULL;
    int status = KAVIO_NO_MEMORY;
    (void)type;
    if (text != NULL) {
        (*env)->GetByteArrayRegion(env, options, 0, length, (jbyte*)text);
        status = kavio_create(text, &session, &line);
    }
    free(text);
    if (line != NULL) {
        jbyteArray bytes = bytes_of(env, line, strlen(line));
        if (bytes != NULL) (*env)->SetObjectArrayElement(env, error, 0, bytes);
        kavio_free(line);
    }
    if (status == KAVIO_NO_MEMORY) throw_new(env, "java/lang/OutOfMemoryError", "libkavio-c");
    return (jlong)(intptr_t)session;
}

JNIEXPORT jint JNICALL Java_kavio_Session_send(JNIEnv* env, jobject self, jlong handle, jbyteArray line) {
    jint status = KAVIO_NO_MEMORY;
    jbyte* bytes = (*env)->GetByteArrayElements(env, line, NULL);
    (void)self;
    if (bytes == NULL) return status;
    status = kavio_send(session_of(handle), (const char*)bytes, (size_t)(*env)->GetArrayLength(env, line));
    (*env)->ReleaseByteArrayElements(env, line, bytes, JNI_ABORT);
    return status;
}

/* The line in `line[0]` if the status is KAVIO_OK. */
JNIEXPORT jint JNICALL Java_kavio_Session_receive(JNIEnv* env, jobject self, jlong handle, jint milliseconds,
                                                  jobjectArray line) {
    char* text;
    size_t length;
    int status = kavio_receive(session_of(handle), milliseconds, &text, &length);
    (void)self;
    if (status == KAVIO_OK) {
        jbyteArray bytes = bytes_of(env, text, length);
        if (bytes != NULL) (*env)->SetObjectArrayElement(env, line, 0, bytes);
        kavio_free(text);
    }
    return status;
}

JNIEXPORT void JNICALL Java_kavio_Session_close(JNIEnv* env, jobject self, jlong handle) {
    (void)env;
    (void)self;
    kavio_close(session_of(handle));
}

JNIEXPORT void JNICALL Java_kavio_Session_destroy(JNIEnv* env, jclass type, jlong handle) {
    (void)env;
    (void)type;
    kavio_destroy(session_of(handle));
}

JNIEXPORT jint JNICALL Java_kavio_Session_abi(JNIEnv* env, jclass type) {
    (void)env;
    (void)type;
    return kavio_abi();
}

JNIEXPORT jstring JNICALL Java_kavio_Session_version(JNIEnv* env, jclass type) {
    (void)type;
    return (*env)->NewStringUTF(env, kavio_version());
}

JNIEXPORT jstring JNICALL Java_kavio_Session_build(JNIEnv* env, jclass type) {
    (void)type;
    return (*env)->NewStringUTF(env, kavio_build());
}
