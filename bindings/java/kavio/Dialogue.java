package kavio;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import com.google.gson.reflect.TypeToken;
import java.util.ArrayDeque;
import java.util.List;
import java.util.Objects;
import java.util.concurrent.CompletableFuture;
import java.util.function.Consumer;
import java.util.function.Function;

/** Carries out one operation after the other. */
public abstract class Dialogue implements AutoCloseable {
    /** Long after every operation has ended by itself. */
    private static final long NEVER = 1_000_000_000_000L;

    private static final class Operation<T> {
        final JsonObject line;
        final Consumer<T> onReport; // null if there is one report
        final Function<JsonObject, T> payload;
        final CompletableFuture<T> result = new CompletableFuture<>();
        JsonObject last;
        int questions = 0;

        Operation(JsonObject line, Consumer<T> onReport, Function<JsonObject, T> payload) {
            this.line = line;
            this.onReport = onReport;
            this.payload = payload;
        }

        void report() {
            if (onReport == null || !isSuccess(last)) return;
            try {
                T report = payload.apply(last);
                if (report != null) onReport.accept(report);
            } catch (RuntimeException problem) { // the consumer's
                result.completeExceptionally(problem);
            }
        }

        void complete() {
            try {
                result.complete(payload.apply(last));
            } catch (RuntimeException failure) {
                result.completeExceptionally(failure);
            }
        }
    }

    private final Session session;
    private final ArrayDeque<Operation<?>> operations = new ArrayDeque<>();
    private boolean isClosed = false;

    Dialogue(String options) {
        session = new Session(options);
        Thread reader = new Thread(this::read, "kavio-wallet");
        reader.setDaemon(true);
        reader.start();
    }

    /** Gives up what is under way: a purchase that has not left never will. Futures that are left fail. */
    @Override
    public void close() {
        session.close();
    }

    static JsonObject line(String op, Object... arguments) {
        JsonObject line = new JsonObject();
        line.addProperty("op", op);
        for (int i = 0; i < arguments.length; i += 2)
            line.add((String) arguments[i], Json.GSON.toJsonTree(arguments[i + 1]));
        line.addProperty("timeoutMs", NEVER);
        return line;
    }

    /** Takes the first of the members that the event has; null without any. Pairs of a label and a type. */
    @SuppressWarnings("unchecked")
    static <T> Function<JsonObject, T> payload(Object... labels) {
        return event -> {
            for (int i = 0; i < labels.length; i += 2) {
                if (!event.has((String) labels[i])) continue;
                TypeToken<?> type = (TypeToken<?>) labels[i + 1];
                Object value = Json.GSON.fromJson(event.get((String) labels[i]), type.getType());
                return (T) (value == null && type.getRawType() == List.class ? List.of() : value);
            }
            return null;
        };
    }

    <T> CompletableFuture<T> perform(JsonObject line, Function<JsonObject, T> payload) {
        return start(new Operation<>(line, null, failing(payload)));
    }

    <T> CompletableFuture<T> follow(JsonObject line, Consumer<T> onReport, Function<JsonObject, T> payload) {
        return start(new Operation<>(line, Objects.requireNonNull(onReport), failing(payload)));
    }

    private <T> CompletableFuture<T> start(Operation<T> operation) {
        try {
            synchronized (operations) {
                if (operations.isEmpty()) session.send(operation.line.toString());
                if (isClosed) throw new Session.ClosedException();
                operations.add(operation);
            }
        } catch (Session.ClosedException closed) {
            operation.result.completeExceptionally(closed);
        }
        return operation.result;
    }

    private static boolean isSuccess(JsonObject event) {
        return event.getAsJsonObject("result").get("type").getAsString().equals("SUCCESS");
    }

    /** Throws what the event says instead of a payload. */
    private static <T> Function<JsonObject, T> failing(Function<JsonObject, T> payload) {
        return event -> {
            if (event.has("message")) throw new IllegalArgumentException(event.get("message").getAsString());
            if (!event.has("result") || isSuccess(event)) return payload.apply(event);
            JsonObject result = event.getAsJsonObject("result");
            throw new KavioException(Json.GSON.fromJson(result.get("type"), ResultType.class),
                    Json.GSON.fromJson(result.get("cause"), Cause.class),
                    Json.GSON.fromJson(result.get("effect"), Effect.class),
                    Json.GSON.fromJson(result.get("message"), String.class));
        };
    }

    private void read() {
        try {
            while (true) take(JsonParser.parseString(session.receive(-1)).getAsJsonObject());
        } catch (Session.ClosedException closed) {
            List<Operation<?>> left;
            synchronized (operations) {
                isClosed = true;
                left = List.copyOf(operations);
            }
            for (Operation<?> operation : left) operation.result.completeExceptionally(closed);
        }
    }

    private void take(JsonObject event) {
        Operation<?> operation;
        synchronized (operations) {
            operation = operations.element();
        }
        if (operation.last != null && event.has("op")) { // whether the facade is still busy
            --operation.questions;
            if (operation.questions == 0 && !event.get("value").getAsBoolean()) finish(operation);
            return;
        }
        operation.last = event;
        if (operation.onReport == null || !event.has("callback")) {
            finish(operation);
            return;
        }
        // A facade is free as soon as it has made its last report.
        ++operation.questions;
        session.send(line("isBusy").toString());
        operation.report();
    }

    private void finish(Operation<?> operation) {
        synchronized (operations) {
            operations.remove();
            if (!operations.isEmpty()) session.send(operations.element().line.toString());
        }
        operation.complete();
    }
}
