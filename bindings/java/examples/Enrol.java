import java.util.concurrent.CompletionException;
import kavio.Cause;
import kavio.KavioException;
import kavio.PaymentMethod;
import kavio.TDSCardHolder;
import kavio.TDSPaymentCard;
import kavio.Wallet;

/** Logs in and stores a card with 3-D Secure, if the issuer asks for no page. Arguments: STORE AUTHORITY.pem HOST:PORT NUMBER */
public class Enrol {
    public static void main(String[] arguments) {
        Wallet.Options options = new Wallet.Options();
        options.storeDir = arguments[0];
        options.caFile = arguments[1];
        options.connectTo = arguments[2];
        int status = 0;
        try (Wallet wallet = new Wallet(options)) {
            wallet.login("49", "151234567").join();
            System.out.print("Code: ");
            wallet.verify(new java.util.Scanner(System.in).next(), "DE", "49", "151234567").join();
            wallet.addCreditCardTDSecure(new TDSPaymentCard(arguments[3], 12, 2039, 123),
                    new TDSCardHolder("Robin Sample", "robin@kavio.example")).join();
            for (PaymentMethod method : wallet.getPaymentMethods().join())
                System.out.println(method.getClass().getSimpleName() + " " + method.number);
        } catch (CompletionException problem) {
            System.err.println(problem.getCause());
            status = problem.getCause() instanceof KavioException failure && failure.reason == Cause.PAGE_NOT_SHOWN ? 3 : 1;
        }
        System.exit(status);
    }
}
