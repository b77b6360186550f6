import { mkdir } from "node:fs/promises";
import { join } from "node:path";
import { chromium, type Browser, type BrowserContextOptions, type Page } from "playwright-core";

/** How long anything may take on a machine with other work to do, in milliseconds. */
export const patience = 60_000;
const screenshots = process.env["QEL_TEST_SCREENSHOTS"] ?? "screenshots";

export const phone: BrowserContextOptions = { viewport: { width: 390, height: 844 }, hasTouch: true, isMobile: true };
export const desktop: BrowserContextOptions = { viewport: { width: 1280, height: 860 } };

export function launch(): Promise<Browser> {
    return chromium.launch({
        executablePath: "/usr/bin/chromium",
        // The sandbox needs rights that a container seldom gives; the others keep it from asking hosts of its own.
        args: [
            "--no-sandbox",
            "--disable-gpu",
            "--disable-quic",
            "--no-first-run",
            "--disable-background-networking",
            "--disable-component-update",
            "--disable-sync",
        ],
    });
}

/** A page, and everything about it that should not be. */
export class Watched {
    readonly offences: string[] = [];
    private readonly allowed: number[] = [];

    private constructor(
        readonly page: Page,
        private readonly address: string,
    ) {}

    static async open(browser: Browser, address: string, options: BrowserContextOptions = desktop): Promise<Watched> {
        const context = await browser.newContext({ locale: "en-GB", reducedMotion: "reduce", ...options });
        context.setDefaultTimeout(patience);
        const watched = new Watched(await context.newPage(), address);
        await watched.listen();
        return watched;
    }

    /** Goes to a view, "streams/gate". */
    async go(view: string): Promise<void> {
        await this.page.goto(`${this.address}/#/${view}`);
    }

    /** Answers with this status are part of the test: the browser reports them as errors. */
    allow(status: number): void {
        this.allowed.push(status);
    }

    /** Keeps a picture of the page for people to look at. */
    async keep(name: string): Promise<void> {
        await mkdir(screenshots, { recursive: true });
        await this.page.screenshot({ path: join(screenshots, `${name}.png`) });
    }

    /** By how many pixels the page is wider than the screen. */
    overhang(): Promise<number> {
        return this.page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);
    }

    async close(): Promise<void> {
        await this.page.context().close();
    }

    private async listen(): Promise<void> {
        await this.page.addInitScript(() =>
            document.addEventListener("securitypolicyviolation", (event) =>
                console.error(`policy violated: ${event.violatedDirective} ${event.blockedURI}`),
            ),
        );
        this.page.on("pageerror", (error) => this.offences.push(`exception: ${error.stack ?? error.message}`));
        this.page.on("request", (request) => {
            const target = request.url().replace(/^blob:/, "");
            if (!target.startsWith(`${this.address}/`)) this.offences.push(`request to ${request.url()}`);
        });
        this.page.on("console", (message) => {
            const isAllowed = this.allowed.some((status) => message.text().includes(`with a status of ${status}`));
            if (["error", "warning"].includes(message.type()) && !isAllowed) this.offences.push(message.text());
        });
    }
}
