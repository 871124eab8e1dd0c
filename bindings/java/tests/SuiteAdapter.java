import com.google.gson.JsonObject;
import java.io.BufferedReader;
import java.io.IOException;
import java.io.InputStreamReader;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;
import kavio.Session;

/** The suite's adapter for Java: reads what to do from standard input, as bindings/suite/run says. */
public class SuiteAdapter {
    private static final PrintStream OUTPUT = new PrintStream(System.out, true, StandardCharsets.UTF_8);

    private static void show(Session session) {
        try {
            while (true) OUTPUT.println(session.receive(-1));
        } catch (Session.ClosedException end) {
            // as it should be
        }
    }

    private static Session open(String options) {
        try {
            Session session = new Session(options);
            new Thread(() -> show(session)).start();
            return session;
        } catch (IllegalArgumentException problem) {
            JsonObject error = new JsonObject();
            error.addProperty("event", "error");
            error.addProperty("message", problem.getMessage());
            OUTPUT.println(error);
            return null;
        }
    }

    public static void main(String[] arguments) throws IOException {
        BufferedReader input = new BufferedReader(new InputStreamReader(System.in, StandardCharsets.UTF_8));
        Session session = null;
        for (String text; (text = input.readLine()) != null;) {
            if (text.startsWith("+")) session = open(text.substring(1));
            else if (text.startsWith(">") && session != null) session.send(text.substring(1));
            else if (session != null) session.close();
        }
    }
}
