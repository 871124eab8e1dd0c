import java.util.concurrent.CompletionException;
import kavio.Order;
import kavio.OrderStatus;
import kavio.PaymentMethod;
import kavio.PaymentType;
import kavio.UnsettledPayment;
import kavio.Wallet;

/** Logs in and buys. Arguments: STORE AUTHORITY.pem HOST:PORT */
public class Buy {
    public static void main(String[] arguments) {
        Wallet.Options options = new Wallet.Options();
        options.apiKey = "api-key";
        options.storeDir = arguments[0];
        options.caFile = arguments[1];
        options.connectTo = arguments[2];
        boolean isPaid = false;
        try (Wallet wallet = new Wallet(options)) {
            try {
                wallet.login("49", "151234567").join();
                System.out.print("Code: ");
                String code = new java.util.Scanner(System.in).next();
                wallet.verify(code, "DE", "49", "151234567").join();
                PaymentMethod balance = new PaymentMethod("0", "", PaymentType.KAVIO);
                Order order = wallet.placeOrder(42100107, balance, 150, null, report -> System.out.println(report.status))
                        .join();
                isPaid = order != null && order.status == OrderStatus.COMPLETED;
            } catch (CompletionException failure) {
                System.err.println(failure.getCause());
                for (UnsettledPayment payment : wallet.unsettledPayments().join())
                    System.err.println("In doubt; settlePayment finds out: " + payment.id);
            }
        }
        System.exit(isPaid ? 0 : 1);
    }
}
