// Fills the page from the data that is packed in it. The charts are Chart.js's, the table is
// DataTables'. Every text becomes a text node, or is escaped by DataTables' own renderer.
'use strict';

(() => {
  const kBars = 12;        // of a chart; what is beyond them is added up
  const kRowsShown = 200;  // of the small tables
  const kMonths = 1200;
  const byId = id => document.getElementById(id);
  const whole = new Intl.NumberFormat('en');
  const tenths = new Intl.NumberFormat('en', {maximumFractionDigits: 1});
  const hundredths = new Intl.NumberFormat('en', {maximumFractionDigits: 2});

  async function unpacked(id) {
    const element = byId(id);
    const text = atob(element.textContent.trim());
    element.remove();
    const bytes = new Uint8Array(text.length);
    for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
    const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('gzip'));
    return JSON.parse(await new Response(stream).text());
  }

  function bytesText(bytes) {
    const units = ['bytes', 'kB', 'MB', 'GB', 'TB', 'PB', 'EB'];
    let unit = 0;
    while (bytes >= 1000 && unit < units.length - 1) {
      bytes /= 1000;
      ++unit;
    }
    return tenths.format(bytes) + '\u00a0' + units[unit];
  }

  function durationText(seconds) {
    const rounded = Math.round(seconds);
    const two = number => String(number).padStart(2, '0');
    const minutes = Math.floor(rounded / 60);
    return Math.floor(minutes / 60) + ':' + two(minutes % 60) + ':' + two(rounded % 60);
  }

  const countText = (count, noun) => whole.format(count) + ' ' + noun + (count === 1 ? '' : 's');
  const hoursText = hours => (hours < 10 ? hundredths : tenths).format(hours);
  const measures = {
    1: {of: row => row[1], text: whole.format, tick: value => Number.isInteger(value) ? whole.format(value) : ''},
    2: {of: row => row[2], text: bytesText, tick: bytesText},
    3: {of: row => row[3] / 3600, text: hoursText, tick: hoursText},
  };

  function element(name, text, ...children) {
    const made = document.createElement(name);
    if (text !== '') made.textContent = text;
    made.append(...children);
    return made;
  }

  // Columns: {title, isNumber}; a cell is a text, or an element.
  function smallTable(columns, rows, total = rows.length) {
    const table = element('table', '');
    const put = (name, row, cells) => cells.forEach((cell, i) => {
      const made = element(name, '', cell);
      if (columns[i].isNumber) made.className = 'number';
      if (name === 'th') made.scope = 'col';
      row.append(made);
    });
    put('th', table.createTHead().insertRow(), columns.map(column => column.title));
    const body = table.createTBody();
    rows.slice(0, kRowsShown).forEach(cells => put('td', body.insertRow(), cells));
    const left = total - Math.min(rows.length, kRowsShown);
    if (left > 0) return element('div', '', table, element('p', 'and ' + whole.format(left) + ' more'));
    return table;
  }

  function choice(text, label, test) {
    const button = element('button', text);
    button.type = 'button';
    button.className = 'link';
    button.dir = 'auto';
    button.title = 'Show these files in the table';
    button.addEventListener('click', () => choose(label, test));
    return button;
  }

  // ---- Charts
  const charts = [];
  const colour = name => getComputedStyle(document.documentElement).getPropertyValue('--' + name).trim();
  // Chart.js asks again at every update.
  const colourNow = (name, more = '') => () => colour(name) + more;

  function figure(parent, title, kind = '') {
    const canvas = element('canvas', '');
    canvas.setAttribute('role', 'img');
    canvas.setAttribute('aria-label', title);
    const box = element('div', '', canvas);
    box.className = 'canvas';
    const made = element('figure', '', element('figcaption', title), box);
    made.className = kind;
    parent.append(made);
    return {canvas, made};
  }

  // REFILL puts other numbers into the chart.
  function addChart(canvas, configuration, refill = () => {}) {
    for (const scale of Object.values(configuration.options.scales)) {
      scale.grid = {color: colourNow('line'), ...scale.grid};
      scale.ticks = {color: colourNow('text'), ...scale.ticks};
    }
    charts.push({chart: new Chart(canvas, configuration), refill});
  }

  function updateCharts() {
    for (const {chart, refill} of charts) {
      refill(chart);
      chart.update('none');
    }
  }

  function measure() {
    return measures[document.querySelector('input[name=measure]:checked').value];
  }

  function barsOf(group) {
    const {of} = measure();
    const rows = group.rows.slice().sort((a, b) => of(b) - of(a));
    const bars = rows.slice(0, kBars).map(row => ({name: row[0], value: of(row)}));
    const rest = rows.slice(kBars);
    if (rest.length > 0)
      bars.push({name: whole.format(rest.length) + ' others', value: rest.reduce((sum, row) => sum + of(row), 0)});
    return bars;
  }

  function groupTest(group, name) {
    const index = group.index;
    const isCounted = kind => group.kinds.length === 0 || group.kinds.includes(kind);
    return row => (row[index] || 'unknown') === name && isCounted(row[columns.kind]);
  }

  function showGroup(group) {
    if (group.rows.length === 0) return;
    const {canvas, made} = figure(byId('groups'), group.title);
    canvas.id = 'chart-' + group.id;
    canvas.parentNode.style.height = Math.max(9, 3 + 1.5 * Math.min(group.rows.length, kBars + 1)) + 'rem';
    addChart(canvas, {
      type: 'bar',
      data: {labels: [], datasets: [{data: [], backgroundColor: colourNow('accent'), maxBarThickness: 22}]},
      options: {
        indexAxis: 'y',
        animation: false,
        maintainAspectRatio: false,
        onClick: (event, hits, chart) => {
          const name = hits.length > 0 ? chart.data.labels[hits[0].index] : undefined;
          if (group.rows.some(row => row[0] === name)) choose(group.title + ': ' + name, groupTest(group, name));
        },
        plugins: {legend: {display: false}, tooltip: {callbacks: {label: item => measure().text(item.raw)}}},
        scales: {
          x: {beginAtZero: true, ticks: {maxTicksLimit: 5, callback: value => measure().tick(value)}},
          y: {grid: {display: false}, ticks: {autoSkip: false}},
        },
      },
    }, chart => {
      const bars = barsOf(group);
      chart.data.labels = bars.map(bar => bar.name);
      chart.data.datasets[0].data = bars.map(bar => bar.value);
    });
    const rows = group.rows.map(row => [
      choice(row[0], group.title + ': ' + row[0], groupTest(group, row[0])),
      whole.format(row[1]), hoursText(row[3] / 3600), bytesText(row[2]),
    ]);
    const numbers = element('details', '', element('summary', 'Numbers'), smallTable([
      {title: group.title}, {title: 'Files', isNumber: true}, {title: 'Hours', isNumber: true},
      {title: 'Bytes', isNumber: true},
    ], rows));
    made.append(numbers);
  }

  // With the months between, unless nonsense dates would make that thousands.
  function continuous(months) {
    const number = text => 12 * Number(text.slice(0, 4)) + Number(text.slice(5)) - 1;
    const digits = (value, count) => String(value).padStart(count, '0');
    const name = month => digits(Math.floor(month / 12), 4) + '-' + digits(month % 12 + 1, 2);
    if (months.length < 2) return months;
    const first = number(months[0][0]);
    const count = number(months[months.length - 1][0]) - first + 1;
    const known = new Map(months);
    if (!(count <= kMonths) || months.some(([text]) => name(number(text)) !== text)) return months;
    return Array.from({length: count}, (ignored, i) => [name(first + i), known.get(name(first + i)) || 0]);
  }

  function showPhotos({months: present, undated}) {
    const months = continuous(present);
    const dated = months.reduce((sum, month) => sum + month[1], 0);
    byId('photos-text').textContent = dated + undated === 0 ? 'There are no photos.' :
      countText(dated, 'photo') + ' with a date' +
      (undated === 0 ? '.' : ', ' + whole.format(undated) + ' without one.');
    if (months.length === 0) return;
    const {canvas} = figure(byId('photos-chart'), 'Photos taken in each month');
    canvas.id = 'chart-months';
    addChart(canvas, {
      type: 'bar',
      data: {
        labels: months.map(month => month[0]),
        datasets: [{data: months.map(month => month[1]), backgroundColor: colourNow('accent')}],
      },
      options: {
        animation: false,
        maintainAspectRatio: false,
        onClick: (event, hits) => {
          if (hits.length === 0) return;
          const month = months[hits[0].index][0];
          choose('Photos of ' + month, row => row[columns.taken].startsWith(month));
        },
        plugins: {legend: {display: false}},
        scales: {
          x: {grid: {display: false}, ticks: {maxRotation: 0, autoSkipPadding: 16}},
          y: {beginAtZero: true, ticks: {precision: 0}},
        },
      },
    });
  }

  function showPlaces(places) {
    const files = places.reduce((sum, place) => sum + place[2], 0);
    byId('places-text').textContent = places.length === 0 ? 'No file says where it was made.' :
      countText(files, 'file') + (files === 1 ? ' says where it was' : ' say where they were') + ' made, at ' +
      countText(places.length, 'place') + ', rounded to tenths of a degree.';
    if (places.length === 0) return;
    const {canvas} = figure(byId('places-chart'), 'Where photos and films were made', 'map');
    canvas.id = 'chart-places';
    const most = places.reduce((best, place) => Math.max(best, place[2]), 1);
    const world = JSON.parse(byId('world').textContent).flatMap(
      line => [...line.map(([x, y]) => ({x, y})), {x: NaN, y: NaN}]);
    const axis = (min, max) => ({min, max, grid: {display: false}, ticks: {display: false}});
    addChart(canvas, {
      type: 'scatter',
      data: {
        datasets: [
          {
            data: places.map(([latitude, longitude]) => ({x: longitude, y: latitude})),
            pointRadius: places.map(place => 3 + 9 * Math.sqrt(place[2] / most)),
            pointHoverRadius: places.map(place => 4 + 9 * Math.sqrt(place[2] / most)),
            backgroundColor: colourNow('accent', 'b0'),
            borderColor: colourNow('panel'),
          },
          {
            data: world,
            showLine: true,
            borderWidth: 1,
            borderColor: colourNow('quiet'),
            pointRadius: 0,
            pointHitRadius: 0,
          },
        ],
      },
      options: {
        animation: false,
        aspectRatio: 2.4,
        onClick: (event, hits) => {
          const hit = hits.find(each => each.datasetIndex === 0);
          if (hit !== undefined) choosePlace(places[hit.index]);
        },
        plugins: {
          legend: {display: false},
          tooltip: {
            filter: item => item.datasetIndex === 0,
            callbacks: {
              label: ({dataIndex}) => placeName(places[dataIndex]) + ': ' + countText(places[dataIndex][2], 'file'),
            },
          },
        },
        scales: {x: axis(-180, 180), y: axis(-60, 85)},
      },
    });
    const rows = places.slice().sort((a, b) => b[2] - a[2]).map(place => {
      const button = choice(placeName(place), '', () => true);
      button.addEventListener('click', () => choosePlace(place));
      return [button, place[0].toFixed(1), place[1].toFixed(1), whole.format(place[2])];
    });
    byId('places-table').append(smallTable([
      {title: 'Place'}, {title: 'Latitude', isNumber: true}, {title: 'Longitude', isNumber: true},
      {title: 'Files', isNumber: true},
    ], rows));
  }

  const placeName = place => place[3] || place[0].toFixed(1) + ', ' + place[1].toFixed(1);
  function choosePlace(place) {
    const text = place[0].toFixed(1) + ' ' + place[1].toFixed(1);
    choose('Made at ' + placeName(place), row => row[columns.place] === text);
  }

  // ---- Sections with tables
  function showTelevisions({named, reasons}) {
    const unnamed = reasons.reduce((sum, reason) => sum + reason.files, 0);
    byId('televisions-text').textContent = named + unnamed === 0 ? 'There are no videos and songs.' :
      countText(unnamed, 'video or song').replace('video or songs', 'videos and songs') +
      ' without a DLNA name, which a television asks for; ' + whole.format(named) + ' with one.';
    if (reasons.length === 0) return;
    const rows = reasons.map((reason, i) => ({reason, i})).sort((a, b) => b.reason.files - a.reason.files)
      .map(({reason, i}) => {
        const why = reason.missing.length > 0 ? 'needs ' + reason.missing.join(', ') : reason.remark;
        return [
          choice(why, 'No DLNA name: ' + why, row => row[columns.televisionReason] === i), reason.nearest || '-',
          whole.format(reason.files), bytesText(reason.bytes), element('span', reason.example),
        ];
      });
    byId('televisions-table').append(smallTable([
      {title: 'Why'}, {title: 'Nearest name'}, {title: 'Files', isNumber: true}, {title: 'Bytes', isNumber: true},
      {title: 'For example'},
    ], rows));
  }

  function showDuplicates({fingerprints, groups, count, bytes}, files) {
    if (fingerprints === 0) {
      byId('duplicates-text').textContent = files === 0 ? 'There are no files.' :
        'No file of this library has a fingerprint, by which equal files are found. "kolum scan --fingerprint" gives ' +
        'one to each file that it reads; known and unchanged files are read again after "kolum library forget".';
      return;
    }
    byId('duplicates-text').textContent = countText(fingerprints, 'file') +
      (fingerprints === 1 ? ' has' : ' have') + ' a fingerprint, a hash of size, beginning and end. ' + (count === 0 ?
      'No two are equal.' : countText(count, 'fingerprint') + ' of several files; with one file of each, ' +
      bytesText(bytes) + ' less.');
    if (count === 0) return;
    const rows = groups.map(group => {
      const names = element('span', '');
      group.files.forEach((path, i) => names.append(...(i > 0 ? [element('br', '')] : []), element('bdi', path)));
      const left = group.count - group.files.length;
      if (left > 0) names.append(' and ' + whole.format(left) + ' more');
      return [
        names, whole.format(group.count), bytesText(group.bytes),
        choice('Show', 'Equal to ' + group.files[0], row => row[columns.fingerprint] === group.fingerprint),
      ];
    });
    byId('duplicates-table').append(smallTable([
      {title: 'Files'}, {title: 'Copies', isNumber: true}, {title: 'Size of each', isNumber: true}, {title: ''},
    ], rows, count));
  }

  function showProblems(problems, files) {
    const count = problems.reduce((sum, problem) => sum + problem.files, 0);
    byId('problems-text').textContent = files === 0 ? 'There are no files.' :
      count === 0 ? 'Every file could be described.' :
      countText(count, 'file') + ' could not be described, or not as ' + (count === 1 ? 'it is' : 'they are') + ' now.';
    if (count === 0) return;
    const rows = problems.map((problem, i) => ({problem, i})).sort((a, b) => b.problem.files - a.problem.files)
      .map(({problem, i}) => [
        choice(problem.reason, 'Problem: ' + problem.reason, row => row[columns.problem] === i), problem.code,
        problem.state, problem.retry, whole.format(problem.files),
      ]);
    byId('problems-table').append(smallTable([
      {title: 'Reason'}, {title: 'Code'}, {title: 'State'}, {title: 'Tried again'}, {title: 'Files', isNumber: true},
    ], rows));
  }

  // ---- The table of files
  let columns = {};  // name -> index
  let table;
  let chosen = null;

  function choose(label, test) {
    chosen = test;
    byId('chosen').hidden = false;
    byId('chosen-text').textContent = label;
    table.draw();
    byId('files').scrollIntoView();
    byId('chosen-clear').focus({preventScroll: true});
  }

  function chooseAll() {
    chosen = null;
    byId('chosen').hidden = true;
    table.draw();
  }

  function fillFilters(rows) {
    for (const select of document.querySelectorAll('select[data-filter]')) {
      const index = columns[select.dataset.filter];
      const values = [...new Set(rows.map(row => row[index]))].filter(value => value !== '').sort();
      select.append(element('option', 'all'));
      select.options[0].value = '';
      select.append(...values.slice(0, 1000).map(value => element('option', value)));
      select.addEventListener('change', () => table.draw());
    }
  }

  function showTable(rows, problems) {
    const escapes = DataTable.render.text();
    const textColumn = (name, title, width) => ({
      title, width, data: columns[name], type: 'string', render: {
        display: escapes.display, filter: escapes.filter, _: value => value,
      },
    });
    const numberColumn = (name, title, width, text) => ({
      title, width, data: columns[name], type: 'num', className: 'number', searchable: false,
      render: (value, use) => use === 'display' ? (value === 0 ? '' : text(value)) : value,
    });
    const slash = row => row[columns.file].lastIndexOf('/') + 1;
    const fileName = row => row[columns.file].slice(slash(row));
    const folder = row => row[columns.file].slice(0, slash(row));
    const pixels = row => row[columns.width] * row[columns.height];
    const size = row => pixels(row) > 0 ? row[columns.width] + ' x ' + row[columns.height] : '';
    const reason = row => row[columns.problem] < 0 ? '' : problems[row[columns.problem]].reason;
    const madeColumn = (title, width, text, order) => ({
      title, width, data: null, type: order ? 'num' : 'string', render: (ignored, use, row) =>
        use === 'sort' || use === 'type' ? (order ? order(row) : text(row)) : escapes.display(text(row)),
    });
    const selects = [...document.querySelectorAll('select[data-filter]')];
    $.fn.dataTable.ext.search.push((settings, data, index) => {
      const row = rows[index];
      return (chosen === null || chosen(row)) &&
        selects.every(select => select.value === '' || row[columns[select.dataset.filter]] === select.value);
    });
    $.fn.dataTable.ext.errMode = 'throw';
    table = new DataTable('#table', {
      data: rows,
      deferRender: true,
      autoWidth: false,
      order: [],
      orderClasses: false,
      scrollY: '65vh',
      scrollX: true,
      scrollCollapse: true,
      scroller: true,
      dom: 'ftiS',
      searchDelay: 150,
      language: {search: 'Search', info: '_START_ to _END_ of _TOTAL_ files', infoEmpty: 'no files',
                 infoFiltered: '(of _MAX_)', emptyTable: 'The library has no files.', zeroRecords: 'No file fits.'},
      columns: [
        madeColumn('File', '20rem', fileName), textColumn('kind', 'Kind', '4.5rem'),
        numberColumn('bytes', 'Size', '6rem', bytesText), numberColumn('seconds', 'Plays', '6rem', durationText),
        textColumn('container', 'Container', '6.5rem'), textColumn('videoCodec', 'Pictures', '8.5rem'),
        madeColumn('Frame', '8rem', size, pixels),
        textColumn('dynamicRange', 'Range', '6rem'), textColumn('audioCodec', 'Sound', '6rem'),
        textColumn('channels', 'Channels', '6rem'), textColumn('dlnaProfile', 'DLNA name', '14rem'),
        textColumn('date', 'Date', '7rem'), textColumn('title', 'Title', '14rem'),
        textColumn('artist', 'Artist', '12rem'), textColumn('state', 'State', '7rem'),
        madeColumn('Problem', '20rem', reason), madeColumn('Folder', '30rem', folder),
      ],
      createdRow: row => {
        for (const cell of row.cells) {
          cell.dir = 'auto';
          cell.title = cell.textContent;
        }
      },
    });
    const body = document.querySelector('.dataTables_scrollBody');
    body.tabIndex = 0;
    body.setAttribute('role', 'region');
    body.setAttribute('aria-label', 'Table of files');
    byId('chosen-clear').addEventListener('click', chooseAll);
  }

  function showTotals({totals, groups}) {
    const add = (value, name) => byId('totals').append(element('div', '', element('b', value), element('span', name)));
    add(whole.format(totals.files), totals.files === 1 ? 'file' : 'files');
    add(hoursText(totals.seconds / 3600), 'hours');
    add(bytesText(totals.bytes), 'in all');
    const kinds = groups.find(group => group.id === 'kind');
    for (const [kind, files] of kinds.rows)
      add(whole.format(files), kind === 'unknown' ? 'of no known kind' : 'of kind ' + kind);
  }

  function showVersions() {
    byId('chart-version').textContent = 'Chart.js ' + Chart.version;
    byId('jquery-version').textContent = 'jQuery ' + $.fn.jquery;
    byId('table-version').textContent = 'DataTables ' + DataTable.version;
    byId('scroller-version').textContent = 'Scroller ' + DataTable.Scroller.version + ' for DataTables';
  }

  async function show() {
    const [summary, rows] = await Promise.all([unpacked('packed-summary'), unpacked('packed-files')]);
    summary.columns.forEach((name, i) => { columns[name] = i; });
    for (const group of summary.groups) group.index = columns[group.column];
    byId('about').textContent = [summary.library, ...summary.paths.map(path => 'below ' + path)].join(', ');
    byId('made').textContent = 'Made by ' + summary.program + ' at ' + summary.made + ' UTC.';
    showVersions();
    showTotals(summary);
    Chart.defaults.font.family = 'system-ui, sans-serif';
    summary.groups.forEach(showGroup);
    showPhotos(summary);
    showTelevisions(summary.televisions);
    showDuplicates(summary.duplicates, summary.totals.files);
    showProblems(summary.problems, summary.totals.files);
    showPlaces(summary.places);
    updateCharts();
    fillFilters(rows);
    showTable(rows, summary.problems);
    for (const radio of document.querySelectorAll('input[name=measure]'))
      radio.addEventListener('change', updateCharts);
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', updateCharts);
    matchMedia('print').addEventListener('change', updateCharts);
    byId('message').hidden = true;
    document.documentElement.dataset.state = 'ready';
  }

  show().catch(error => {
    document.documentElement.dataset.state = 'failed';
    byId('message').textContent = 'This page cannot be shown: ' + error.message;
    throw error;
  });
})();
