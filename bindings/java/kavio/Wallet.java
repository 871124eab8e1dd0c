package kavio;

/**
 * One facade of the library. Operations run one after the other, each gives a future, and none blocks. A future that fails
 * has a {@link KavioException}, an {@link IllegalArgumentException} for an argument that the library cannot read, or a
 * {@link Session.ClosedException}. Futures and consumers are told on the wallet's own thread, which must not wait for
 * another operation: use the future's Async methods for that.
 */
public final class Wallet extends Operations {
    /** Those of libkavio-c; what is null is left out. All wallets of a process share those from {@code storeDir} on. */
    public static final class Options {
        public String apiKey;
        public String environment;
        public String storeDir;
        public String connectTo;
        public String caFile;
        public String kavioKey;
        public String bundleVersion;
    }

    public Wallet(Options options) {
        super(Json.GSON.toJson(options));
    }
}
