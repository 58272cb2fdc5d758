// The editor page in headless Chromium against a real `vantel edit`: building on the bundled example by
// mouse and keyboard, then the timings of large graphs.
import { copyFileSync, mkdtempSync, readFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

import type { BrowserContext, Page } from 'playwright-core';
import { afterAll, beforeAll, describe, expect, test, vi } from 'vitest';

import { examples, openBrowser, runHost, type Session, startSession, writeGridProject } from './session';

let browser: BrowserContext;
const sessions: Session[] = [];
const shots = process.env.VANTEL_SCREENSHOTS;

beforeAll(async () => {
  browser = await openBrowser();
});

afterAll(async () => {
  await browser?.close();
  await Promise.all(sessions.map((s) => s.stop()));
});

async function open(file: string): Promise<{ page: Page; session: Session; errors: string[] }> {
  const session = await startSession(file);
  sessions.push(session);
  const page = await browser.newPage();
  const errors: string[] = [];
  page.on('pageerror', (error) => errors.push(error.message));
  await page.goto(session.url);
  return { page, session, errors };
}

// The canvas's own record of where a port or an operator is, in page coordinates.
async function portPoint(page: Page, path: string): Promise<{ x: number; y: number }> {
  return page.evaluate((portPath) => {
    const { canvas } = (window as any).vantelEditor;
    const at = canvas.portScreen(portPath);
    const box = canvas.element.getBoundingClientRect();
    return { x: box.left + at[0], y: box.top + at[1] };
  }, path);
}

async function operatorPoint(page: Page, path: string): Promise<{ x: number; y: number }> {
  return page.evaluate((opPath) => {
    const { canvas, editor } = (window as any).vantelEditor;
    const op = editor.findOperator(opPath);
    const at = canvas.toScreen([op.position[0] + 60, op.position[1] + 10]);
    const box = canvas.element.getBoundingClientRect();
    return { x: box.left + at[0], y: box.top + at[1] };
  }, path);
}

async function drag(page: Page, from: { x: number; y: number }, to: { x: number; y: number }): Promise<void> {
  await page.mouse.move(from.x, from.y);
  await page.mouse.down();
  await page.mouse.move(to.x, to.y, { steps: 8 });
  await page.mouse.up();
}

// Retries an assertion on what the page shows until it holds, for up to ten seconds.
async function eventually<T>(read: () => Promise<T>, check: (value: T) => void): Promise<void> {
  await vi.waitFor(async () => check(await read()), { timeout: 10000, interval: 100 });
}

const graphOf = (page: Page) => page.evaluate(() => (window as any).vantelEditor.editor.graph);
const operatorOfType = async (page: Page, type: string) =>
  (await graphOf(page)).operators.find((op: { type: string }) => op.type === type);

describe('the editor page', () => {
  test('builds on the example: add, connect, set, undo, redo, enter, save', async () => {
    const folder = mkdtempSync(join(tmpdir(), 'vantel-editor-'));
    copyFileSync(join(examples, 'ImagePipeline/ImagePipeline.json'), join(folder, 'ImagePipeline.json'));
    copyFileSync(join(examples, 'ImagePipeline/input.png'), join(folder, 'input.png'));
    const file = join(folder, 'ImagePipeline.json');
    const { page, session, errors } = await open(file);
    await page.waitForFunction(() => (window as any).vantelEditor?.canvas.drawnOperators === 4);

    // The palette opens with "/", finds by tag, and adds what Enter picks.
    await page.locator('#graph').click({ position: { x: 600, y: 500 } });
    await page.keyboard.press('/');
    await eventually(() => page.evaluate(() => document.activeElement?.id), (id) => expect(id).toBe('palette-search'));
    await page.keyboard.type('lfo');
    await eventually(() => page.locator('.palette-item').allTextContents(), (items) => expect(items).toEqual(['OscillatorAdd']));
    await page.keyboard.press('Control+A');
    await page.keyboard.type('arithmetic');
    await eventually(() => page.locator('#palette-doc').textContent(), (doc) => expect(doc).toContain('Value B'));
    await page.keyboard.press('Enter');
    await eventually(() => operatorOfType(page, 'Standard.Math.Arithmetic'), (op) => expect(op).toBeTruthy());
    const sum = (await operatorOfType(page, 'Standard.Math.Arithmetic')).path;
    const oscillator = (await operatorOfType(page, 'Standard.Math.Oscillator')).path;
    const process = (await operatorOfType(page, 'Vantel.General.Graph')).path;

    // An image cannot feed a number: the library's reason is shown and nothing is connected.
    await drag(page, await portPoint(page, `${process}/Image Output [boc]`), await portPoint(page, `${sum}/B`));
    const refusal = `connect ${process.slice(1)}/Image Output [boc] → ${sum.slice(1)}/B: the connection is not allowed`;
    await eventually(() => page.locator('#toast.visible').textContent(), (text) => expect(text).toBe(refusal));
    await eventually(() => page.locator('#log .log-error').allTextContents(), (lines) => expect(lines).toContain(refusal));
    await drag(page, await portPoint(page, `${oscillator}/Signal`), await portPoint(page, `${sum}/A`));
    await eventually(() => graphOf(page), (graph) => expect(graph.dataConnections.length).toBe(3));

    // Value B through its number field; the sum's output value follows on the page, frame by frame.
    await page.mouse.click((await operatorPoint(page, sum)).x, (await operatorPoint(page, sum)).y);
    const result = page.locator(`.parameter[data-path="${sum}/Value"] output`);
    const shown = async () => Number(await result.textContent());
    const field = page.locator(`.parameter[data-path="${sum}/Value B"] input`);
    await field.fill('100');
    await field.press('Enter');
    await eventually(shown, (value) => expect(value).toBeGreaterThanOrEqual(100));

    // Undo and redo by keys, and the history menu names the step.
    await page.locator('#graph').focus();
    await page.keyboard.press('Control+Z');
    await eventually(shown, (value) => expect(value).toBeLessThan(100));
    await page.keyboard.press('Control+Shift+Z');
    await eventually(shown, (value) => expect(value).toBeGreaterThanOrEqual(100));
    if (shots) {
      await page.screenshot({ path: join(shots, 'editor-example.png') });
    }
    await page.locator('#history').click();
    await eventually(() => page.locator('.history-undo').allTextContents(), (steps) => expect(steps[0]).toBe('Set Value B'));
    await page.locator('#history').click();

    // Copy, paste and delete by keys; a drag of two selected operators is one step of the history.
    const count = async () => (await graphOf(page)).operators.length;
    const sumAt = await operatorPoint(page, sum);
    await page.mouse.click(sumAt.x, sumAt.y);
    await page.keyboard.press('Control+C');
    await page.keyboard.press('Control+V');
    await eventually(count, (n) => expect(n).toBe(6));
    await page.keyboard.press('Delete');
    await eventually(count, (n) => expect(n).toBe(5));
    const oscillatorAt = await operatorPoint(page, oscillator);
    await page.mouse.click(oscillatorAt.x, oscillatorAt.y);
    await page.keyboard.down('Shift');
    await page.mouse.click(sumAt.x, sumAt.y);
    await page.keyboard.up('Shift');
    await drag(page, sumAt, { x: sumAt.x + 40, y: sumAt.y + 60 });
    await eventually(
      () => session.request({ type: 'getHistory' }),
      (history) => expect(history.result.undo[0]).toMatchObject({ name: 'Move 2 operators', records: [expect.any(String), expect.any(String)] }),
    );

    // The loaded picture's live preview in the panel, then into the nested graph by double-click.
    const loader = (await operatorOfType(page, 'Standard.Image.LoadImage')).path;
    await page.mouse.click((await operatorPoint(page, loader)).x, (await operatorPoint(page, loader)).y);
    await eventually(() => page.locator('img.preview').getAttribute('src'), (src) => expect(src).toMatch(/^data:image\/png;base64,/));
    const processAt = await operatorPoint(page, process);
    await page.mouse.dblclick(processAt.x, processAt.y);
    await eventually(() => page.locator('#crumbs').textContent(), (text) => expect(text).toBe('Project › Process'));
    await eventually(() => graphOf(page), (graph) => expect(graph.operators.map((op: { type: string }) => op.type)).toContain('Standard.Image.Blur'));
    if (shots) {
      await page.screenshot({ path: join(shots, 'editor-nested.png') });
    }

    // Saved by key; the file loads cleanly and holds the new operator, its connection and its value.
    await page.keyboard.press('Control+S');
    await eventually(() => page.locator('#log').textContent(), (log) => expect(log).toContain(`saved ${file}`));
    const check = await runHost('check', file);
    expect(check.output).toContain('operators: ');
    expect(check.code, check.output).toBe(0);
    const saved = JSON.parse(readFileSync(file, 'utf8')).root;
    const added = saved.operators.find((op: { type: string }) => op.type === 'Standard.Math.Arithmetic');
    expect(added.parameters).toContainEqual({ key: 'Value B', value: 100 });
    expect(saved.dataConnections).toContainEqual({ output: `${oscillator.slice(1)}/Signal`, input: `${added.key}/A` });
    expect(errors).toEqual([]);
  });

  test('opens 1,000 operators quickly and pans 10,000 smoothly', async () => {
    const folder = mkdtempSync(join(tmpdir(), 'vantel-grid-'));
    const small = await open(writeGridProject(folder, 1000));
    await small.page.waitForFunction(() => (window as any).vantelEditor?.editor.graph.operators.length === 1000);
    const openToDrawn = await small.page.evaluate(() => (window as any).vantelEditor.canvas.graphShownAt);
    console.log(`open to a drawn 1,000-operator graph: ${Math.round(openToDrawn)} ms (goal: under 1000)`);

    const large = await open(writeGridProject(folder, 10000));
    await large.session.request({ type: 'pause' });
    await large.page.waitForFunction(() => (window as any).vantelEditor?.editor.graph.operators.length === 10000, null, { timeout: 60000 });
    // Pans by a few pixels every animation frame for two seconds, as a steady drag would.
    const panning = await large.page.evaluate(
      () =>
        new Promise<{ fps: number; drawn: number; drawMs: number }>((done) => {
          const { canvas } = (window as any).vantelEditor;
          const started = performance.now();
          let frames = 0;
          let drawMs = 0;
          const step = () => {
            canvas.panBy(-6, -3);
            drawMs += canvas.lastDrawMilliseconds;
            frames += 1;
            if (performance.now() - started < 2000) {
              requestAnimationFrame(step);
            } else {
              done({ fps: frames / ((performance.now() - started) / 1000), drawn: canvas.drawnOperators, drawMs: drawMs / frames });
            }
          };
          requestAnimationFrame(step);
        }),
    );
    console.log(
      `panning over 10,000 operators: ${panning.fps.toFixed(1)} fps (goal: 30 or more), ` +
        `${panning.drawn} operators in view, ${panning.drawMs.toFixed(2)} ms a draw`,
    );
    if (shots) {
      await large.page.screenshot({ path: join(shots, 'editor-10000.png') });
    }
    // Generous bounds: they catch a renderer that draws everything, not a busy machine.
    expect(panning.drawn).toBeGreaterThan(0);
    expect(panning.drawn).toBeLessThan(2000);
    expect(panning.fps).toBeGreaterThan(15);
    expect(openToDrawn).toBeLessThan(5000);
    expect(small.errors.concat(large.errors)).toEqual([]);
  });
});
