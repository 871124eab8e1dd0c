package kavio;

import com.google.gson.Gson;
import com.google.gson.GsonBuilder;
import com.google.gson.JsonDeserializer;
import com.google.gson.JsonPrimitive;
import com.google.gson.JsonSerializer;
import java.time.Instant;
import java.time.ZoneOffset;
import java.time.format.DateTimeFormatter;
import java.util.Map;

/** Between the objects and what stands for them in a line. */
final class Json {
    private static final DateTimeFormatter DATE =
            DateTimeFormatter.ofPattern("uuuu-MM-dd'T'HH:mm:ss.SSS'Z'").withZone(ZoneOffset.UTC);
    private static final Map<String, Class<? extends PaymentMethod>> METHODS =
            Map.of("PaymentMethod", PaymentMethod.class, "CreditCard", CreditCard.class, "DepositCard",
                    DepositCard.class, "PrepaidCard", PrepaidCard.class);
    private static final Gson MEMBERS = builder().create();

    /** For objects of any kind, payment methods by their own. */
    static final Gson GSON =
            builder().registerTypeAdapter(PaymentMethod.class, (JsonDeserializer<PaymentMethod>) (json, type, context) ->
                    MEMBERS.fromJson(json, METHODS.get(json.getAsJsonObject().get("class").getAsString()))).create();

    private static GsonBuilder builder() {
        return new GsonBuilder()
                .registerTypeAdapter(Instant.class, (JsonSerializer<Instant>) (date, type, context) ->
                        new JsonPrimitive(DATE.format(date)))
                .registerTypeAdapter(Instant.class, (JsonDeserializer<Instant>) (json, type, context) ->
                        Instant.parse(json.getAsString()));
    }

    private Json() {}
}
