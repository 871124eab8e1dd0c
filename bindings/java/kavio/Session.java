package kavio;

import static java.nio.charset.StandardCharsets.UTF_8;

import com.google.gson.JsonParser;
import java.lang.ref.Cleaner;

/** Lines of JSON, as docs/bindings.md describes them. May be used from any thread. */
public final class Session implements AutoCloseable {
    private static final int ABI = 1;
    private static final int OK = 0;
    private static final int TIMEOUT = 1;
    private static final int CLOSED = 2;
    private static final Cleaner CLEANER = Cleaner.create();

    static {
        System.loadLibrary("kavio-jni");
        if (abi() != ABI) throw new UnsatisfiedLinkError("libkavio-c has the ABI " + abi() + " instead of " + ABI);
    }

    /** The session has been closed. */
    public static final class ClosedException extends IllegalStateException {
        ClosedException() {
            super("the session is closed");
        }
    }

    private final long handle;

    /** Throws {@link IllegalArgumentException} for options that libkavio-c does not accept. */
    public Session(String options) {
        byte[][] error = new byte[1][];
        long created = create(options.getBytes(UTF_8), error);
        if (created == 0) {
            String line = new String(error[0], UTF_8);
            throw new IllegalArgumentException(
                    JsonParser.parseString(line).getAsJsonObject().get("message").getAsString());
        }
        handle = created;
        // Only then is it certain that nobody uses the session any longer: a method that runs holds it.
        CLEANER.register(this, () -> destroy(created));
    }

    public void send(String line) {
        check(send(handle, line.getBytes(UTF_8)));
    }

    /** The next line; null if there is none within the limit. A negative limit waits for as long as it takes. */
    public String receive(int milliseconds) {
        byte[][] line = new byte[1][];
        int status = receive(handle, milliseconds, line);
        if (status == TIMEOUT) return null;
        check(status);
        return new String(line[0], UTF_8);
    }

    /** Ends whatever waits, and gives up work under way. */
    @Override
    public void close() {
        close(handle);
    }

    /** The library's version, such as "1.0.0". */
    public static native String version();

    /** The library's build number. */
    public static native String build();

    private static void check(int status) {
        if (status == CLOSED) throw new ClosedException();
        if (status != OK) throw new OutOfMemoryError("libkavio-c");
    }

    private static native int abi();

    private static native long create(byte[] options, byte[][] error);

    private static native void destroy(long handle);

    private native int send(long handle, byte[] line);

    private native int receive(long handle, int milliseconds, byte[][] line);

    private native void close(long handle);
}
